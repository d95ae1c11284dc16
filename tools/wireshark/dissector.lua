-- luacheck: read globals Address Field Int64 Proto ProtoExpert ProtoField UInt64 base expert frametype
-- luacheck: read globals records version programs register_postdissector

-- How a record's field becomes a Wireshark field, by kind.
local makers = {
  int = ProtoField.int32,
  uint = ProtoField.uint32,
  double = ProtoField.double,
  int64 = ProtoField.int64,
  uint64 = ProtoField.uint64,
  text = ProtoField.string,
  mac = ProtoField.ether,
  hex = ProtoField.string,
  ints = ProtoField.string,
}

local librpc = Proto("librpc", "Device table call")

local message_types = { [0] = "Call", [1] = "Reply" }
local accept_states = {
  [0] = "Success",
  [1] = "Program not available",
  [2] = "Program version mismatch",
  [3] = "Procedure not available",
  [4] = "Garbage arguments",
  [5] = "System error",
}
local deny_states = { [0] = "RPC version mismatch", [1] = "Authentication error" }

local header = {
  service = ProtoField.string("librpc.service", "Service"),
  xid = ProtoField.uint32("librpc.xid", "XID", base.HEX),
  message = ProtoField.uint32("librpc.message", "Message", base.DEC, message_types),
  program = ProtoField.uint32("librpc.program", "Program"),
  version = ProtoField.uint32("librpc.version", "Version"),
  procedure = ProtoField.uint32("librpc.procedure", "Procedure"),
  api = ProtoField.string("librpc.api", "API"),
  accept = ProtoField.uint32("librpc.accept", "Accept state", base.DEC, accept_states),
  deny = ProtoField.uint32("librpc.deny", "Reject state", base.DEC, deny_states),
  status = ProtoField.int32("librpc.status", "Status"),
  record = ProtoField.string("librpc.record", "Record"),
  body = ProtoField.bytes("librpc.body", "Body"),
  low = ProtoField.uint32("librpc.low", "Lowest version"),
  high = ProtoField.uint32("librpc.high", "Highest version"),
  auth = ProtoField.uint32("librpc.auth", "Authentication state"),
  reply_frame = ProtoField.framenum("librpc.reply_frame", "Reply in frame", base.NONE, frametype.RESPONSE),
  call_frame = ProtoField.framenum("librpc.call_frame", "Call in frame", base.NONE, frametype.REQUEST),
}

local function expert_info(name, text, group, severity)
  return ProtoExpert.new("librpc." .. name, text, group, severity)
end
local group, severity = expert.group, expert.severity
local experts = {
  short = expert_info("short", "Body ends before its record", group.MALFORMED, severity.ERROR),
  long = expert_info("long", "Bytes behind the record", group.PROTOCOL, severity.NOTE),
  unknown = expert_info("unknown", "Unknown procedure or version", group.UNDECODED, severity.WARN),
  again = expert_info("again", "Another reply to the same call", group.SEQUENCE, severity.NOTE),
}

do
  local fields = {}
  for _, field in pairs(header) do
    fields[#fields + 1] = field
  end
  for record_name, record in pairs(records) do
    for _, field in ipairs(record) do
      local name, kind = field[1], field[2]
      field.proto = makers[kind]("librpc." .. record_name .. "." .. name, name)
      fields[#fields + 1] = field.proto
      field.of_table = {}
    end
  end
  -- The same under the table's name, which is what people know: librpc.portstat.ifx.
  local kinds = {}
  local function name_by_table(table_name, record_name)
    for _, field in ipairs(records[record_name] or {}) do
      local name = ("librpc.%s.%s"):format(table_name, field[1])
      kinds[name] = kinds[name] or { kind = field[2] }
      local known = kinds[name]
      if known.kind == field[2] then
        if not known.proto then
          known.proto = makers[known.kind](name, field[1])
          fields[#fields + 1] = known.proto
        end
        field.of_table[table_name] = known.proto
      end
    end
  end
  for _, service in pairs(programs) do
    for _, procedure in pairs(service.procedures) do
      name_by_table(procedure.table, procedure.request)
      name_by_table(procedure.table, procedure.reply)
    end
  end
  librpc.fields = fields
  local list = {}
  for _, one in pairs(experts) do
    list[#list + 1] = one
  end
  librpc.experts = list
end

-- A char travels as the last byte of its unit.
local function characters(range)
  return (range:raw():gsub("...(.)", "%1"))
end

-- A field's value for Wireshark, and as text for people.
local readers = {
  int = function(range) return range:int() end,
  uint = function(range) return range:uint() end,
  double = function(range) return range:float() end,
  int64 = function(range) return Int64.new(range(0, 4):uint(), range(4, 4):uint()) end,
  uint64 = function(range) return UInt64.new(range(0, 4):uint(), range(4, 4):uint()) end,
  text = function(range)
    local text = characters(range):match("^[^%z]*")
    return (text:gsub("[^\32-\126]", function(c) return ("\\x%02x"):format(c:byte()) end))
  end,
  mac = function(range)
    local text = characters(range):gsub(".", function(c) return (":%02x"):format(c:byte()) end):sub(2)
    return Address.ether(text), text
  end,
  hex = function(range)
    return (characters(range):gsub(".", function(c) return ("%02x"):format(c:byte()) end))
  end,
  ints = function(range)
    local numbers = {}
    for at = 0, range:len() - 4, 4 do
      numbers[#numbers + 1] = range(at, 4):int()
    end
    return table.concat(numbers, ",")
  end,
}

-- Adds a record's fields; what is missing of it or left over is told.
local function show_record(name, range, tree, pinfo, table_name)
  local record = records[name]
  local size = 0
  for _, field in ipairs(record) do
    size = size + 4 * field[3]
  end
  local branch = tree:add(header.record, range, "oltmib_" .. name)
  local at, first = 0, nil
  for _, field in ipairs(record) do
    local bytes = 4 * field[3]
    if at + bytes > range:len() then
      branch:add_proto_expert_info(experts.short,
        ("Body ends %d bytes before its record"):format(size - range:len()))
      return
    end
    local value, text = readers[field[2]](range(at, bytes))
    local shown_as = field.of_table[table_name]
    branch:add(shown_as or field.proto, range(at, bytes), value)
    if shown_as then -- filters by the record's name find it too
      branch:add(field.proto, range(at, bytes), value):set_hidden()
    end
    first = first or ("%s %s"):format(field[1], tostring(text or value))
    at = at + bytes
  end
  if range:len() > size then
    branch:add_proto_expert_info(experts.long, ("%d bytes behind the record"):format(range:len() - size))
  end
  pinfo.cols.info:append(", " .. first)
end

-- Calls by frame, and by what their reply carries: addresses, ports and xid.
local calls, latest, replies, shown

function librpc.init()
  calls, latest, replies, shown = {}, {}, {}, nil
end

local function pair_key(client, client_port, server, server_port, xid)
  return table.concat({ tostring(client), client_port, tostring(server), server_port, xid }, "|")
end

-- The place behind an authenticator (flavour, length, bytes) at `at`, or nil.
local function behind_auth(tvb, at)
  if at + 8 > tvb:len() then
    return nil
  end
  local length = tvb(at + 4, 4):uint()
  at = at + 8 + math.ceil(length / 4) * 4
  return length <= 400 and at <= tvb:len() and at or nil
end

-- An RPC call (RFC 5531) to one of our programs, or nil.
local function read_call(tvb)
  if tvb:len() < 40 or tvb(4, 4):uint() ~= 0 or tvb(8, 4):uint() ~= 2 then
    return nil
  end
  local call = { xid = tvb(0, 4):uint(), program = tvb(12, 4):uint(), version = tvb(16, 4):uint(),
    procedure = tvb(20, 4):uint() }
  call.service = programs[call.program]
  local at = call.service and behind_auth(tvb, 24)
  call.body = at and behind_auth(tvb, at)
  if not call.body then
    return nil
  end
  call.known = call.version == version and call.service.procedures[call.procedure] or nil
  call.name = call.known and call.known.name or call.procedure == 0 and "null" or "procedure " .. call.procedure
  return call
end

local function begin(tvb, pinfo, root, call, message)
  pinfo.cols.protocol = "librpc"
  pinfo.cols.info = ("%s %s"):format(call.name, message_types[message])
  local tree = root:add(librpc, tvb(), ("%s, %s %s"):format(librpc.description, call.name, message_types[message]))
  tree:add(header.xid, tvb(0, 4))
  tree:add(header.message, tvb(4, 4))
  return tree
end

local function body_of(tvb, at)
  return at < tvb:len() and tvb(at) or nil
end

local function show_call(tvb, pinfo, root, call)
  if not pinfo.visited then
    calls[pinfo.number] = call
    call.frame = pinfo.number
    latest[pair_key(pinfo.src, pinfo.src_port, pinfo.dst, pinfo.dst_port, call.xid)] = call
  end
  local known = call.known
  local tree = begin(tvb, pinfo, root, call, 0)
  tree:add(header.program, tvb(12, 4))
  tree:add(header.service, tvb(12, 4), call.service.name):set_generated()
  tree:add(header.version, tvb(16, 4))
  tree:add(header.procedure, tvb(20, 4))
  tree:add(header.api, tvb(20, 4), call.name):set_generated()
  local answered = calls[pinfo.number] and calls[pinfo.number].reply_frame
  if answered then
    tree:add(header.reply_frame, answered):set_generated()
  end
  local body = body_of(tvb, call.body)
  if known and known.request then
    show_record(known.request, body or tvb(tvb:len(), 0), tree, pinfo, known.table)
  elseif body then
    tree:add(header.body, body)
  end
  if not known and call.procedure ~= 0 then
    tree:add_proto_expert_info(experts.unknown)
  end
end

-- The call that a reply belongs to, or nil.
local function call_of(tvb, pinfo)
  if tvb:len() < 12 or tvb(4, 4):uint() ~= 1 then
    return nil
  end
  if not pinfo.visited then
    local call = latest[pair_key(pinfo.dst, pinfo.dst_port, pinfo.src, pinfo.src_port, tvb(0, 4):uint())]
    replies[pinfo.number] = call
    if call and not call.reply_frame then
      call.reply_frame = pinfo.number
    end
  end
  return replies[pinfo.number]
end

local function show_success(range, tree, pinfo, call)
  local known = call.known
  if known and known.reply then
    show_record(known.reply, range, tree, pinfo, known.table)
  elseif known then
    if range:len() < 4 then
      tree:add_proto_expert_info(experts.short, ("Body ends %d bytes before its status"):format(4 - range:len()))
      return
    end
    tree:add(header.status, range(0, 4))
    pinfo.cols.info:append((", status %d"):format(range(0, 4):int()))
    if range:len() > 4 then
      tree:add_proto_expert_info(experts.long, ("%d bytes behind the status"):format(range:len() - 4))
    end
  elseif range:len() > 0 then
    tree:add(header.body, range)
  end
end

-- The versions that a daemon has, where it was asked for another.
local function show_versions(tvb, at, tree)
  if at + 8 <= tvb:len() then
    tree:add(header.low, tvb(at, 4))
    tree:add(header.high, tvb(at + 4, 4))
  end
end

local function show_reply(tvb, pinfo, root, call)
  local tree = begin(tvb, pinfo, root, call, 1)
  tree:add(header.program, tvb(0, 0), call.program):set_generated()
  tree:add(header.service, tvb(0, 0), call.service.name):set_generated()
  tree:add(header.procedure, tvb(0, 0), call.procedure):set_generated()
  tree:add(header.api, tvb(0, 0), call.name):set_generated()
  tree:add(header.call_frame, call.frame):set_generated()
  if call.reply_frame ~= pinfo.number then
    tree:add_proto_expert_info(experts.again)
  end
  if tvb(8, 4):uint() ~= 0 then
    if tvb:len() >= 16 then
      tree:add(header.deny, tvb(12, 4))
      pinfo.cols.info:append(", " .. (deny_states[tvb(12, 4):uint()] or "denied"))
      if tvb(12, 4):uint() == 0 then
        show_versions(tvb, 16, tree)
      elseif tvb:len() >= 20 then
        tree:add(header.auth, tvb(16, 4))
      end
    end
    return
  end
  local at = behind_auth(tvb, 12)
  if not at or at + 4 > tvb:len() then
    tree:add_proto_expert_info(experts.short, "Reply ends in its header")
    return
  end
  local state = tvb(at, 4):uint()
  tree:add(header.accept, tvb(at, 4))
  if state == 0 then
    show_success(body_of(tvb, at + 4) or tvb(tvb:len(), 0), tree, pinfo, call)
  else
    pinfo.cols.info:append(", " .. (accept_states[state] or "refused"))
    if state == 2 then
      show_versions(tvb, at + 4, tree)
    end
  end
end

-- True when the datagram is one of ours, and then it is shown.
local function dissect(tvb, pinfo, root)
  local call = read_call(tvb)
  if call then
    show_call(tvb, pinfo, root, call)
  else
    call = call_of(tvb, pinfo)
    if not call then
      return false
    end
    show_reply(tvb, pinfo, root, call)
  end
  shown = pinfo.number
  return true
end

librpc:register_heuristic("udp", dissect)

-- Clients take reserved ports, and Wireshark gives some of them to protocols
-- that take every datagram: those are looked at again here, behind all others.
local payload = Field.new("udp.payload")

function librpc.dissector(_, pinfo, root)
  local info = shown ~= pinfo.number and payload()
  if info then
    dissect(info.range:tvb(), pinfo, root)
  end
end

register_postdissector(librpc)
