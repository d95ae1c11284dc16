-- The run's figures as one SVG: the calls beside echo and plain way, the cost
-- over the record's size, the cost over the number of APIs.
local plot = {}

local width, margin = 860, 24
local colours = { echo = "#9aa5b1", library = "#1f6feb", plain = "#d9822b" }

local function add(to, format, ...)
  to[#to + 1] = format:format(...)
end

local function text(to, x, y, anchor, words, class)
  add(to, '<text x="%.1f" y="%.1f" text-anchor="%s"%s>%s</text>', x, y, anchor,
    class and (' class="%s"'):format(class) or "", words)
end

local function legend(to, x, y, names)
  for _, name in ipairs(names) do
    add(to, '<rect x="%.1f" y="%.1f" width="10" height="10" fill="%s"/>', x, y - 9, colours[name[1]])
    text(to, x + 15, y, "start", name[2])
    x = x + 32 + 7 * #name[2]
  end
end

local function bars(to, top, rows)
  local left, right, bar, gap = 220, width - 70, 13, 14
  local most = 0
  for _, row in ipairs(rows) do
    most = math.max(most, row.plain, row.library)
  end
  text(to, margin, top, "start", "Microseconds a call", "title")
  legend(to, left, top, { { "echo", "bare UDP echo" }, { "library", "the library" }, { "plain", "plain way" } })
  local y = top + 16
  for _, row in ipairs(rows) do
    text(to, left - 8, y + 1.5 * bar + 1, "end", row.api.name)
    text(to, left - 8, y + 2.5 * bar + 1, "end", ("%d + %d units"):format(row.api.request, row.api.reply), "small")
    for _, way in ipairs({ "echo", "library", "plain" }) do
      local length = (right - left) * row[way] / most
      add(to, '<rect x="%d" y="%.1f" width="%.1f" height="%d" fill="%s"/>', left, y, length, bar - 1, colours[way])
      local label = way == "echo" and ("%.2f"):format(row[way])
        or ("%.2f  (%.2f x echo)"):format(row[way], row[way] / row.echo)
      if left + length + 110 > width then
        text(to, left + length - 5, y + bar - 3, "end", label, "small inside")
      else
        text(to, left + length + 5, y + bar - 3, "start", label, "small")
      end
      y = y + bar
    end
    y = y + gap
  end
  return y
end

-- A chart with axes: `points` are {x, y...}; x is on a logarithmic scale.
local function chart(to, box, title, ticks, most, lines)
  local function at_x(value)
    local from, upto = math.log(ticks[1]), math.log(ticks[#ticks])
    return box.x + 40 + (box.width - 60) * (math.log(value) - from) / (upto - from)
  end
  local function at_y(value)
    return box.y + box.height - 24 - (box.height - 64) * value / most
  end
  text(to, box.x, box.y, "start", title, "title")
  local step = most > 8 and 2 or 1
  for value = 0, most, step do
    add(to, '<line x1="%.1f" x2="%.1f" y1="%.1f" y2="%.1f" class="grid"/>', box.x + 40, box.x + box.width - 20,
      at_y(value), at_y(value))
    text(to, box.x + 34, at_y(value) + 4, "end", ("%d us"):format(value), "small")
  end
  for _, tick in ipairs(ticks) do
    text(to, at_x(tick), box.y + box.height - 6, "middle", ("%d"):format(tick), "small")
  end
  for _, line in ipairs(lines) do
    local places = {}
    for i, point in ipairs(line.points) do
      places[i] = ("%.1f,%.1f"):format(at_x(point[1]), at_y(point[2]))
      add(to, '<circle cx="%.1f" cy="%.1f" r="3" fill="%s"/>', at_x(point[1]), at_y(point[2]), line.colour)
      if point[3] then
        local anchor = i == 1 and "start" or i == #line.points and "end" or "middle"
        text(to, at_x(point[1]), at_y(point[2]) - 9, anchor, point[3], "small")
      end
    end
    add(to, '<polyline points="%s" fill="none" stroke="%s" stroke-width="2"/>', table.concat(places, " "), line.colour)
  end
end

local function points_of(rows, x, y, label)
  local points = {}
  for i, row in ipairs(rows) do
    points[i] = { x(row), y(row), label and label(row) }
  end
  return points
end

function plot.svg(results)
  local to = {}
  local y = bars(to, 40, results.calls) + 30
  local half = (width - 3 * margin) / 2
  local most = 0
  for _, row in ipairs(results.by_size) do
    most = math.max(most, row.library)
  end
  most = 2 * math.ceil(most / 2 + 0.25)
  local function units(row)
    return row.api.reply
  end
  chart(to, { x = margin, y = y, width = half, height = 260 }, "A call over its record's units",
    { 35, 100, 300, 1000, 2105 }, most, {
      { colour = colours.echo, points = points_of(results.by_size, units, function(row) return row.echo end) },
      { colour = colours.library, points = points_of(results.by_size, units, function(row) return row.library end) },
    })
  chart(to, { x = 2 * margin + half, y = y, width = half, height = 260 },
    "A call over the number of APIs (its look-up)", { 304, 3000, 30000 }, most, {
      {
        colour = colours.library,
        points = points_of(results.by_registry, function(row) return row.apis end, function(row) return row.call end,
          function(row) return ("%.0f ns"):format(row.look_up) end),
      },
    })
  local height = y + 260 + margin
  local style = "text{font:12px sans-serif;fill:#24292f}.title{font-weight:bold}.small{font-size:10px}"
    .. ".inside{fill:#fff}.grid{stroke:#d8dee4;stroke-width:1}"
  return ('<svg xmlns="http://www.w3.org/2000/svg" width="%d" height="%d" viewBox="0 0 %d %d">\n'):format(
    width, height, width, height) .. "<style>" .. style .. "</style>\n"
    .. '<rect width="100%" height="100%" fill="#fff"/>\n' .. table.concat(to, "\n") .. "\n</svg>\n"
end

return plot
