-- Seconds of a clock that goes on while the process sleeps; os.clock does not.
return function()
  local file = io.open("/proc/uptime")
  if not file then
    return os.time()
  end
  local whole, part = file:read("*l"):match("^(%d+)%.(%d+)")
  file:close()
  return tonumber(whole) + tonumber(part) / 10 ^ #part
end
