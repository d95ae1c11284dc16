-- The soak's samples as an SVG: resident memory and descriptors over time.
local plot = {}

local width, left, right, height = 860, 70, 20, 170

local function panel(to, top, title, samples, name)
  local last, most = samples[#samples].seconds, 1
  for _, sample in ipairs(samples) do
    most = math.max(most, sample[name])
  end
  local function x(seconds)
    return left + (width - left - right) * seconds / math.max(last, 1)
  end
  local function y(value)
    return top + height - height * value / most
  end
  local points = {}
  for i, sample in ipairs(samples) do
    points[i] = ("%.1f,%.1f"):format(x(sample.seconds), y(sample[name]))
  end
  to[#to + 1] = ('<text x="%d" y="%d" class="title">%s</text>'):format(left, top - 8, title)
  for _, value in ipairs { 0, most } do
    to[#to + 1] = ('<line x1="%d" y1="%.1f" x2="%d" y2="%.1f"/>'):format(left, y(value), width - right, y(value))
    to[#to + 1] = ('<text x="%d" y="%.1f" text-anchor="end">%d</text>'):format(left - 8, y(value) + 4, value)
  end
  to[#to + 1] = ('<text x="%d" y="%d" text-anchor="end">%d seconds</text>'):format(width - right, top + height + 16,
    last)
  to[#to + 1] = ('<polyline points="%s"/>'):format(table.concat(points, " "))
end

-- Samples are { seconds =, resident = kilobytes, descriptors = }.
function plot.write(path, summary, samples)
  local lines = {
    ('<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 %d %d" font-family="sans-serif" font-size="12">'):format(
      width, 2 * height + 130),
    "<style>.title { font-weight: bold } line { stroke: #d0d7de } polyline { fill: none; stroke: #1f6feb }</style>",
    '<rect width="100%" height="100%" fill="white"/>',
    ('<text x="%d" y="24">%s</text>'):format(left, summary),
  }
  panel(lines, 60, "Resident memory, KB", samples, "resident")
  panel(lines, 60 + height + 50, "Descriptors", samples, "descriptors")
  lines[#lines + 1] = "</svg>"
  local file = assert(io.open(path, "w"))
  file:write(table.concat(lines, "\n"), "\n")
  file:close()
end

return plot
