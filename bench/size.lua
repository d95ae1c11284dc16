-- What the library is made of: its stripped file, its relocations, its pages.
local output = require("output")

local size = {}

local groups = {
  { "code", "^%.text$", "^%.plt", "^%.init$", "^%.fini$" },
  { "constant data", "^%.rodata" },
  { "tables with addresses", "^%.data%.rel%.ro", "^%.got" },
  { "names for the linker", "^%.gnu", "^%.dyn", "^%.note" },
  { "relocations", "^%.rela?r?%." },
  { "unwinding", "^%.eh_frame" },
  { "data", "^%.data$", "_array$" },
}

local function group_of(section)
  for _, group in ipairs(groups) do
    for i = 2, #group do
      if section:match(group[i]) then
        return group[1]
      end
    end
  end
end

-- Bytes by group in the groups' order; zeroed memory beside them.
local function made_of(path)
  local bytes, zeroed = {}, 0
  for line in output.of("size -A " .. path):gmatch("[^\n]+") do
    local section, number = line:match("^(%.%S+)%s+(%d+)")
    if section == ".bss" then
      zeroed = tonumber(number)
    elseif section and section ~= ".comment" then
      local group = group_of(section) or "other"
      bytes[group] = (bytes[group] or 0) + tonumber(number)
    end
  end
  local rows = {}
  for _, group in ipairs(groups) do
    rows[#rows + 1] = { name = group[1], bytes = bytes[group[1]] or 0 }
  end
  if bytes.other then
    rows[#rows + 1] = { name = "other", bytes = bytes.other }
  end
  return rows, zeroed
end

-- How many addresses the dynamic linker fills in, and how many of them by name.
local function relocations(path)
  local all, by_name, entries = 0, 0, 0
  local relative = false
  for line in output.of("readelf -rW " .. path):gmatch("[^\n]+") do
    local packed = line:match("^Relocation section '%.relr%.dyn'.*contains (%d+)")
    local offsets = line:match("^%s+(%d+) offsets")
    if packed then
      relative, entries = true, tonumber(packed)
    elseif line:match("^Relocation section") then
      relative = false
    elseif relative and offsets then
      all = all + tonumber(offsets)
    elseif line:match("^%x+%s+%x+%s+R_") then
      all = all + 1
      by_name = by_name + (line:match("_RELATIVE") and 0 or 1)
    end
  end
  return all, by_name, entries
end

function size.measure(library, scratch)
  local stripped = scratch .. "/librpc.stripped.so"
  output.of(("strip -o %s %s"):format(stripped, library))
  local result = { bytes = tonumber((output.of("wc -c <" .. stripped))) }
  result.parts, result.zeroed = made_of(stripped)
  result.relocations, result.by_name, result.packed = relocations(stripped)
  local pages = output.of("lua5.1 bench/fresh.lua residence " .. library)
  result.resident, result.private = pages:match("(%d+)%s+(%d+)")
  return result
end

return size
