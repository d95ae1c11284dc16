-- How rpcctl ends: the one table of its exit statuses, and what each code of
-- librpc.record, librpc.status and librpc.calls ends with and asks to be done. The
-- help, the manual page and the tests read it here. A new code is a row of `codes`.
local exits = {}

-- By name: the number, and what it means.
exits.statuses = {
  { name = "done", number = 0, meaning = "done" },
  { name = "failed", number = 1, meaning = "another failure" },
  { name = "usage", number = 2, meaning = "bad usage: an option, a field, a value, a file" },
  { name = "unknown", number = 3, meaning = "unknown API or table" },
  { name = "no_daemon", number = 4, meaning = "no daemon, or no port mapper" },
  { name = "timed_out", number = 5, meaning = "no answer in time" },
  { name = "result", number = 6, meaning = "the daemon's own result: no such row, one that is there, a refusal" },
  { name = "bad_reply", number = 7, meaning = "the daemon rejected the call or sent a bad reply" },
  { name = "different", number = 8, meaning = "diff: the settings differ" },
  { name = "interrupted", number = 130, meaning = "interrupted" },
}

for _, status in ipairs(exits.statuses) do
  exits[status.name] = status.number
end

local fields = "rpcctl describe TABLE shows the fields"
local list = "rpcctl list shows every API, rpcctl list --tables every table"
local health = "rpcctl health tells which daemons answer"
local as_it_is = "rpcctl call shows the text as it is"
local again = "read the row before you repeat a change"

-- How the port mapper failed decides what is to be done about it.
local function about_port_mapper(message)
  return message:find("refused", 1, true) and "start rpcbind" or "it hangs or is slow: restart rpcbind"
end

-- By code: the exit status by its name, and what to do, a text or a function of the
-- message.
local codes = {
  -- rpcctl's own
  usage = { "usage" },
  bad_file = { "usage" },
  different = { "different" },
  not_confirmed = { "failed" },
  write_error = { "failed", "is there room, and may you write there?" },
  -- librpc.record
  unknown_api = { "unknown", list },
  no_operation = { "unknown", list },
  unknown_field = { "usage", fields },
  unknown_option = { "failed", "librpc.record and rpcctl are of different versions" },
  same_field = { "usage", "give one of them" },
  read_only = { "usage", fields },
  bad_type = { "usage", fields },
  bad_number = { "usage", fields },
  out_of_range = { "usage" },
  bad_mac = { "usage", "write it as 00-1e-80-aa-00-01" },
  bad_hex = { "usage", "write two digits a byte" },
  bad_list = { "usage", "write the numbers with commas between" },
  too_long = { "usage", "rpcctl describe shows how long a text may be: one character less than its size" },
  separator = { "usage", "texts cannot hold it, there is no escaping" },
  zero_byte = { "usage" },
  empty_text = { "usage", "give the fields before it a value" },
  no_key = { "usage", "rpcctl rows TABLE shows every row" },
  no_row = { "result", "rpcctl rows TABLE shows every row, rpcctl add makes one" },
  row_exists = { "result", "rpcctl set changes it" },
  not_carried = { "usage", "give it one (FIELD=VALUE, or FIELD= to send it empty), or use --only" },
  cut_reply = { "bad_reply", as_it_is },
  bad_text = { "bad_reply", as_it_is },
  other_row = { "result", "rpcctl rows TABLE shows every row" },
  no_end = { "usage", "--end FIELD=VALUE names the row behind the last" },
  daemon_status = { "result" },
  repeated_row = { "bad_reply", "--end FIELD=VALUE names the row behind the last" },
  too_many_rows = { "bad_reply", "--limit N ends sooner" },
  deadline = { "timed_out", "--timeout SECONDS waits longer" },
  two_sets = { "failed" },
  bad_names = { "failed", "mend the file, or leave it out of LIBRPC_NAMES" },
  -- librpc.status and librpc.calls
  out_of_memory = { "failed" },
  no_portmapper = { "no_daemon", about_port_mapper },
  no_daemon = { "no_daemon", "start the service's daemon; " .. health },
  no_client = { "failed", "are there too many open files?" },
  timed_out = { "timed_out", "is the daemon stuck? " .. health .. "; " .. again },
  refused = { "no_daemon", "is the daemon running? The next call looks for it anew" },
  interrupted = { "interrupted" },
  rejected = { "bad_reply", "the daemon may be of another version, or in trouble: its log should tell" },
  bad_reply = { "bad_reply", "the daemon may be of another version: rpcctl describe shows what is expected" },
  failed = { "failed", health },
  not_sent = { "timed_out", "nothing was sent, so that it may be repeated; " .. health },
  host_api = { "failed", "only its host program can call it" },
  closed = { "failed" },
}
exits.codes = codes

-- The exit status of a code.
function exits.of(code)
  local known = codes[code]
  return exits[known and known[1] or "failed"]
end

-- What to do about a failure, or nil.
function exits.advice(code, message)
  local advice = codes[code] and codes[code][2]
  if type(advice) == "function" then
    return advice(message)
  end
  return advice
end

return exits
