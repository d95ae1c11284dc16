-- The log of changes: a line of JSON each, to a file or to syslog by logger(1). A
-- change is made only where its line can be written: `open` comes first. GET /api/log
-- shows the last lines of a file.
local json = require "librpc.web.json"
local refusals = require "librpc.web.refusals"

local journal = {}

local shown_bytes = 262144 -- of the file's end, among which the last changes are
local default_count, most_count = 20, 200
-- What logger leaves is read all the same: a pipe without a reader would end this process.
-- That of util-linux cuts a line after a kilobyte, unless it is told.
local syslog = "{ logger --version 2>&1 </dev/null | grep -q util-linux && size='--size 8192'; "
  .. "logger $size -t librpc-web -p auth.notice || cat; } >/dev/null 2>&1"
local has_syslog = "test -S /dev/log && command -v logger >/dev/null 2>&1"

-- Where a line can be written to; nil and a refusal.
function journal.open(site)
  local file, problem
  if site.log == "syslog" then
    local status = os.execute(has_syslog)
    if status ~= 0 and status ~= true then
      return refusals.make("no_log", nil, nil, { log = "log: expected logger and /dev/log, found none" })
    end
    file, problem = io.popen(syslog, "w")
  else
    file, problem = io.open(site.log, "a")
  end
  if not file then
    return refusals.make("no_log", nil, nil, { log = "log: expected a file that can be written, found "
      .. tostring(problem) })
  end
  file:setvbuf("full", 65536) -- one write: the lines of several processes do not mix
  return file
end

-- Writes what was done; false where that failed.
function journal.write(file, site, entry)
  entry.time = os.date("!%Y-%m-%dT%H:%M:%SZ")
  local written = file:write(json.encode(entry), "\n") and file:flush()
  -- a server may have waited for logger before this could
  local closed = file:close() or site.log == "syslog"
  return written and closed and true or false
end

-- The last entries of the log, as texts, the newest first.
local function last_lines(path)
  local file = io.open(path, "rb")
  if not file then
    return {}
  end
  local size = file:seek("end")
  file:seek("set", math.max(size - shown_bytes, 0))
  local text = file:read("*a") or ""
  file:close()
  if size > shown_bytes then
    text = text:gsub("^[^\n]*\n", "", 1)
  end
  local lines = {}
  for line in text:gmatch("([^\n]+)\n") do
    table.insert(lines, 1, line)
  end
  return lines
end

function journal.last(request)
  local wanted = request.query and request.query:match("^limit=(%d+)$")
  if request.query and request.query ~= "" and not wanted then
    return refusals.make("bad_body", "query: expected limit=NUMBER or nothing, found another")
  end
  local most = math.min(tonumber(wanted) or default_count, most_count)
  local changes = {}
  for _, line in ipairs(request.site.log ~= "syslog" and last_lines(request.site.log) or {}) do
    if #changes >= most then
      break
    end
    local entry = json.decode(line)
    if json.is_object(entry) and type(entry.table) == "string" and request.rights.may_read(entry.table) then
      changes[#changes + 1] = json.raw(line)
    end
  end
  return { changes = json.array(changes), kept = request.site.log ~= "syslog" }
end

return journal
