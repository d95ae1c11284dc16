-- What other programs print.
local output = {}

-- All that a shell command prints. Its failure is an error.
function output.of(command)
  local pipe = assert(io.popen(command .. " && echo complete"))
  local text = pipe:read("*a")
  pipe:close()
  local found = text:match("^(.*)complete\n$")
  if not found then
    error(("bench: %s: expected success, found a failure"):format(command), 0)
  end
  return found
end

-- A whole file.
function output.read(path)
  local file = assert(io.open(path))
  local text = file:read("*a")
  file:close()
  return text
end

function output.write(path, text)
  local file = assert(io.open(path, "w"))
  file:write(text)
  file:close()
end

return output
