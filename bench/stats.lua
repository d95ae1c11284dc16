-- What is said of many measurements of one thing.
local stats = {}

local function quantile(values, part)
  local sorted = { unpack(values) }
  table.sort(sorted)
  return sorted[math.floor(part * (#sorted - 1) + 0.5) + 1]
end

function stats.median(values)
  return quantile(values, 0.5)
end

-- How far the middle half reaches from the median, as a part of it.
function stats.spread(values)
  return (quantile(values, 0.75) - quantile(values, 0.25)) / 2 / quantile(values, 0.5)
end

-- The median of what each program gives, by its key; rounds of one after another.
function stats.medians(programs, rounds)
  local values = {}
  for round = 1, rounds do
    for key, run in pairs(programs) do
      values[key] = values[key] or {}
      values[key][round] = run()
    end
  end
  local result = {}
  for key, list in pairs(values) do
    result[key] = stats.median(list)
  end
  return result
end

return stats
