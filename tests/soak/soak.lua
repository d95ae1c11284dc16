-- Calls for a long time, beside a device whose daemons fail in turn:
--
--     lua5.1 soak.lua SECONDS PLOT        (./dev soak SECONDS)
--
-- Each step lets one service commit one fault and calls all of them, one after
-- another, many at once, and in a group of an event loop. Every reply is compared
-- field by field with what the healthy device said or was told, every failure with
-- what the fault has to come to, and the device's count of calls with those that were
-- sent: none is lost, none is carried out twice. PLOT is an SVG of the process's
-- resident memory and descriptors, which may not grow.
local librpc = require "librpc"
local calls = require "librpc.calls"
local schema = require "librpc.schema"
local status = require "librpc.status"

local seconds, plot_path = tonumber(arg[1]), arg[2]
if not seconds or not plot_path then
  io.stderr:write("soak: arguments: expected SECONDS PLOT, found ", table.concat(arg, " "), "\n")
  os.exit(2)
end

local function fail(where, expected, found)
  io.stderr:write(("soak: %s: expected %s, found %s\n"):format(where, tostring(expected), tostring(found)))
  os.exit(1)
end

-- The samples as an SVG: resident memory and descriptors over time.
local width, left, right, height = 860, 70, 20, 170

local function panel(to, top, title, samples, name)
  local last, most = samples[#samples].seconds, 1
  for _, sample in ipairs(samples) do
    most = math.max(most, sample[name])
  end
  local function x(time)
    return left + (width - left - right) * time / math.max(last, 1)
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
local function write_plot(path, summary, samples)
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

local function run(command)
  local pipe = assert(io.popen(command))
  local text = pipe:read("*a")
  pipe:close()
  return (text:gsub("\n$", ""))
end

local function tell(command)
  local text = run(("$SIM_DEVICE --tell $SIM_CONTROL '%s' 2>&1 || echo failed"):format(command))
  if text:find("failed$") then
    fail("the device: " .. command, "that it is carried out", text)
  end
  return text
end

local function device_count()
  return tonumber(tell "count *")
end

local own_id = assert(io.open("/proc/self/stat")):read("*n")

local function now()
  local file = assert(io.open("/proc/uptime"))
  local value = file:read("*n")
  file:close()
  return value
end

local sent, field_count, wrong_count, failures_seen = 0, 0, 0, {}

-- What is called: each { api =, argument =, expected = text }; sets are made of them.
local by_service, set_count = {}, 0
local arguments = { "", "1", "2", "3", "10", "20" }

local function has_counters(api)
  for _, position in ipairs(api.output) do
    if position.kind == "counter" then
      return true
    end
  end
  return false
end

local function healthy(name, argument)
  sent = sent + 1
  local text = librpc.callapi(name, argument)
  return text or fail(name, "a reply of the healthy device", (select(2, status.last())))
end

local function split(text, separator)
  local parts, from = {}, 1
  repeat
    local first, last = text:find(separator, from, true)
    parts[#parts + 1] = text:sub(from, (first or 0) - 1)
    from = last and last + 1
  until not from
  return parts
end

-- The place of a text that a set may change and a get shows, in both alike; nil where
-- there is none. A later text of many characters is no key.
local function free_text(get, set)
  if #get.output ~= #set.input or #get.input ~= #set.input or get.separator ~= "&" then
    return nil
  end
  local place
  for i, position in ipairs(set.input) do
    if get.output[i].name ~= position.name or get.output[i].kind ~= position.kind or position.kind == "skip" then
      return nil
    elseif i > 2 and position.kind == "text" and position.size >= 20 then
      place = i
    end
  end
  return place
end

local function with_text(row, text)
  local parts = split(row.expected, "&")
  parts[row.place] = text
  return table.concat(parts, "&")
end

-- Every row that the healthy device tells twice alike.
local function learn()
  for _, service in ipairs(schema.services) do
    by_service[service.name] = { rows = {}, sets = {} }
  end
  for _, api in ipairs(schema.apis) do
    if api.output and (api.operation == "get" or api.operation == "getn") and not has_counters(api) then
      local set = api.operation == "get" and schema.table(api.table).set
      local settable = set and free_text(api, set)
      for _, argument in ipairs(arguments) do
        local expected = healthy(api.name, argument)
        local moves = api.operation == "getn" and schema.table(api.table).set -- as rows are changed
        if not moves and healthy(api.name, argument) == expected then
          local row = { api = api, argument = argument, expected = expected }
          table.insert(by_service[api.service].rows, row)
          if settable and argument == "1" and expected:match("&0$") then
            row.set, row.place = set, settable
          end
        end
      end
    end
  end
  -- a set that the healthy device does not show again is none of ours
  for _, of_service in pairs(by_service) do
    for _, row in ipairs(of_service.rows) do
      if row.set then
        local changed = with_text(row, "before")
        if healthy(row.set.name, changed) == "0" and healthy(row.api.name, row.argument) == changed then
          row.expected, row.changes = changed, true
          set_count = set_count + 1
          table.insert(of_service.sets, row)
        end
      end
    end
    -- nor is a row that shows what another one changes
    local rows = of_service.rows
    of_service.rows = {}
    for _, row in ipairs(rows) do
      if row.changes or healthy(row.api.name, row.argument) == row.expected then
        table.insert(of_service.rows, row)
      end
    end
  end
end

-- What is wrong with a reply: nothing, or the place and both values. A row that a set
-- was sent to, whose reply was lost, is the new one or the old one.
local function compare(row, text)
  if row.maybe and text == row.maybe then
    row.expected = text
  end
  row.maybe = nil
  local expected, found = split(row.expected, row.api.separator), split(text, row.api.separator)
  for i, position in ipairs(row.api.output) do
    field_count = field_count + 1
    if expected[i] ~= found[i] then
      wrong_count = wrong_count + 1
      fail(row.api.name .. " " .. row.argument .. ": " .. position.name, expected[i], found[i])
    end
  end
  if #expected ~= #found then
    fail(row.api.name .. " " .. row.argument .. ": fields", #expected, #found)
  end
end

-- The faults: what the device is told, and what calls of the service come to.
--   code      of each call, nil where all succeed
--   seconds   the calls are many at once, with this deadline
--   first     the code that the first call may have
--   late      the code of calls whose time was over before their turn came
--   noise     the replies are anything that has the right form
local faults = {
  { name = "none" },
  { name = "doubled replies", effect = "double" },
  { name = "a stranger with the right number", effect = "forge" },
  { name = "strangers", effect = "stranger - stranger 00 stranger XID stranger XID0000000100000000" },
  { name = "late replies", effect = "delay 3" },
  { name = "program unavailable", effect = "error prog_unavail", code = "rejected" },
  { name = "version mismatch", effect = "error prog_mismatch", code = "rejected" },
  { name = "procedure unavailable", effect = "error proc_unavail", code = "rejected" },
  { name = "garbage arguments", effect = "error garbage_args", code = "rejected" },
  { name = "system error", effect = "error system_err", code = "rejected" },
  { name = "denied", effect = "error denied", code = "rejected" },
  { name = "RPC mismatch", effect = "error rpc_mismatch", code = "rejected" },
  { name = "a reply without a body", effect = "truncate 0", code = "bad_reply" },
  { name = "a reply cut in its header", effect = "cut 20", code = "bad_reply" },
  { name = "random bodies", effect = "random 0", noise = true },
  { name = "silence", effect = "drop", code = "timed_out", seconds = 0.1, late = "not_sent" },
  { name = "a restart", command = "restart", first = "refused" },
  { name = "a daemon that is gone", command = "stop", code = "no_daemon", first = "refused" },
}

-- Calls that never reach a daemon.
local not_sent = { refused = true, no_daemon = true, not_sent = true, no_portmapper = true, no_client = true }

-- Takes how a call ended: its text, or false and a code.
local function ended(row, text, code, fault, place)
  if not (code and not_sent[code]) then
    sent = sent + 1
  end
  if text then
    if fault.code then
      fail(row.api.name .. ": " .. fault.name, fault.code, "a reply")
    elseif not fault.noise then
      compare(row, text)
    end
    return
  end
  failures_seen[code] = (failures_seen[code] or 0) + 1
  if code ~= fault.code and code ~= fault.late and not (place == 1 and code == fault.first) then
    fail(row.api.name .. ": " .. fault.name, fault.code or "a reply", code)
  end
end

local rounds = 0

-- The rows that a step calls: some of the service's, others each time.
local function some(rows, count)
  local list = {}
  for i = 1, math.min(count, #rows) do
    list[i] = rows[(rounds * count + i) % #rows + 1]
  end
  return list
end

local function call_one_by_one(rows, fault)
  for i, row in ipairs(rows) do
    local text = librpc.callapi(row.api.name, row.argument)
    ended(row, text, not text and status.last() or nil, fault, i)
  end
end

local function list_of(rows)
  local list = {}
  for i, row in ipairs(rows) do
    list[i] = { row.api.name, row.argument }
  end
  return list
end

local function call_all(rows, fault)
  local texts, failures = calls.all(list_of(rows), fault.seconds or 20)
  for i, row in ipairs(rows) do
    -- one that is refused takes those with it that were under way to the same port
    ended(row, texts[i], failures[i] and failures[i].code, fault, fault.first and 1 or i)
  end
end

local function call_in_a_group(rows, fault)
  local group, by_id, open = calls.group(), {}, 0
  for i, row in ipairs(rows) do
    local id, message = group:call(row.api.name, row.argument, fault.seconds or 20)
    by_id[id or fail(row.api.name, "a call of a group", message)] = { row, fault.first and 1 or i }
    open = open + 1
  end
  while open > 0 do
    group:wait(30)
    for id, text, failure in group:finished() do
      ended(by_id[id][1], text, failure and failure.code, fault, by_id[id][2])
      open = open - 1
    end
  end
  group:close()
end

-- Sets go one at a time: whether one whose reply was lost was carried out, the next
-- read tells.
local function set_some(sets, fault)
  if fault.seconds or fault.first then
    return
  end
  for i, row in ipairs(some(sets, 3)) do
    local changed = with_text(row, ("soak %d.%d"):format(rounds % 100000, i))
    local text = librpc.callapi(row.set.name, changed)
    sent = sent + 1
    if text and not fault.noise then
      if text ~= "0" then
        fail(row.set.name, "0", text)
      end
      field_count = field_count + 1
      row.expected, row.maybe = changed, nil
    else
      local code = not text and status.last()
      if not text and code ~= fault.code then
        fail(row.set.name .. ": " .. fault.name, fault.code or "a status", code)
      end
      failures_seen[code or "noise"] = (failures_seen[code or "noise"] or 0) + 1
      row.maybe = changed
    end
  end
end

local ways = { call_one_by_one, call_all, call_in_a_group }

local function step(service, fault)
  if fault.effect then
    tell(("fault %s %s"):format(service, fault.effect))
  elseif fault.command then
    tell(("%s %s"):format(fault.command, service))
  end
  local healthy_fault = faults[1]
  for i, other in ipairs(schema.services) do
    local of_service = by_service[other.name]
    local mine = other.name == service and fault or healthy_fault
    local way = mine.seconds and ways[2] or ways[(rounds + i) % #ways + 1]
    way(some(of_service.rows, mine == healthy_fault and 20 or 6), mine)
    set_some(of_service.sets, mine)
  end
  tell "clear"
  if fault.command == "stop" then
    tell("start " .. service)
  end
  if fault ~= healthy_fault then
    -- healthy again; a daemon that came back has another port
    local rows = some(by_service[service].rows, 20)
    call_one_by_one(rows, fault.command and { name = "after " .. fault.name, first = "refused" } or healthy_fault)
  end
end

local samples = {}

local function sample(started)
  collectgarbage()
  collectgarbage()
  local resident
  for line in io.lines(("/proc/%d/status"):format(own_id)) do
    resident = resident or tonumber(line:match("^VmRSS:%s*(%d+)"))
  end
  local descriptors = tonumber(run(("ls /proc/%d/fd | wc -l"):format(own_id)))
  samples[#samples + 1] = { seconds = now() - started, resident = resident, descriptors = descriptors,
    own = collectgarbage "count" }
end

local function most(name, from, to)
  local value = 0
  for i = math.max(1, math.floor(#samples * from) + 1), math.floor(#samples * to) do
    value = math.max(value, samples[i][name])
  end
  return value
end

local before = device_count()
learn()
local row_count = 0
for _, of_service in pairs(by_service) do
  row_count = row_count + #of_service.rows
end
print(("soak: %d rows of %d services are read, %d are changed"):format(row_count, #schema.services, set_count))
if row_count < 400 or set_count < 20 then
  fail("rows", "400 to read and 20 to change", row_count .. " and " .. set_count)
end

local started, next_sample = now(), 0
while now() - started < seconds or rounds < #faults do -- each fault once at least
  -- another service each time, and another pair each time around
  local fault = faults[rounds % #faults + 1]
  step(schema.services[(rounds + math.floor(rounds / #faults)) % #schema.services + 1].name, fault)
  rounds = rounds + 1
  local counted = device_count() - before
  if counted ~= sent then
    fail(("step %d, %s: calls that the device counted"):format(rounds, fault.name), sent, counted)
  end
  if now() - started >= next_sample then
    sample(started)
    next_sample = now() - started + math.max(seconds / 300, 0.1)
    assert(io.open(os.getenv "SIM_LOG", "w")):close() -- the device's log, which nobody reads
  end
end
sample(started)

local codes = {}
for code, count in pairs(failures_seen) do
  codes[#codes + 1] = count .. " " .. code
end
table.sort(codes)
local first, last = samples[1], samples[#samples]
local summary = ("%d seconds, %d steps, %d calls, %d fields: %d wrong, 0 lost, 0 doubled"):format(
  math.floor(now() - started), rounds, sent, field_count, wrong_count)
print("soak: " .. summary)
print("soak: failed as the faults ask for: " .. table.concat(codes, ", "))
print(("soak: resident memory %d KB at first, %d KB in the end, Lua's own of it %d and %d"):format(
  first.resident, last.resident, first.own, last.own))
print(("soak: descriptors %d at first, %d in the end"):format(first.descriptors, last.descriptors))
write_plot(plot_path, summary, samples)
print("soak: " .. plot_path)

-- Growth shows between the second and the last quarter, when nearly everything is there;
-- what some rare pair of service and fault wants once is none.
local most_growth = 1024 -- KB
if last.descriptors > first.descriptors + 2 * #schema.services then
  fail("descriptors", "no more than at first", first.descriptors .. ", then " .. last.descriptors)
end
if #samples >= 8 then
  local early, late = most("resident", 0.25, 0.5), most("resident", 0.75, 1)
  if late > early + most_growth then
    fail("resident memory", ("at most %d KB more than %d"):format(most_growth, early),
      ("%d KB in the last quarter"):format(late))
  end
  local early_ones, late_ones = most("descriptors", 0.25, 0.5), most("descriptors", 0.75, 1)
  if late_ones > early_ones then
    fail("descriptors", ("no more than %d"):format(early_ones), late_ones)
  end
end
