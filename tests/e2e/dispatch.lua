-- The dispatch: what callapi does with its arguments, and the lines it prints.
local golden = require "golden"
local harness = require "harness"
local case, call, equal, tell = harness.case, harness.call, harness.equal, harness.tell
local calls, run, shell = harness.calls, harness.run, harness.shell

-- The line that names an API's functions, addresses replaced.
local function functions_of(name)
  return ("name %s,\t func ADDRESS,\t str2arg ADDRESS,\t ret2str ADDRESS,\t clntinit ADDRESS,\t " ..
    "clntdestroy ADDRESS"):format(name)
end

-- What a call prints with debugging on.
local function traces(arguments)
  local text = run("librpc.enabledebug() librpc.callapi(" .. arguments .. ")")
  return harness.without_addresses(text)
end

case "unregistered_name_returns_no_value" (function() -- with every interpreter
  for _, name in ipairs { "oltmib_nothing_get_1", "", "OLTMIB_DEVINFO_GET_1", "oltmib_devinfo_get_1 ",
    ("x"):rep(100000), "%s%n%p" } do
    equal(select("#", call(name, "")), 0, "values of " .. name:sub(1, 30))
  end
  equal(calls(), 0, "executions")
end)

case "unregistered_name_prints_line_165" (function()
  equal(traces '"oltmib_nothing_get_1", "a&b"',
    "[lua_callapi: 160]name oltmib_nothing_get_1, str a&b.\r\n" ..
    "[lua_callapi: 165]api oltmib_nothing_get_1 not found.\r\n")
end)

case "stub_without_registration_is_not_found" (function()
  for _, name in ipairs { "oltmib_api_get_1", "oltmib_pminfo_get_1", "oltmib_cvlaninfo_get_1",
    "oltmib_cvlaninfo_getn_1", "oltmib_cvlaninfo_set_1", "oltmib_snmp_cfg_req_1" } do
    equal(traces('"' .. name .. '", ""'),
      "[lua_callapi: 160]name " .. name .. ", str .\r\n[lua_callapi: 165]api " .. name .. " not found.\r\n")
  end
end)

case "successful_call_prints_lines_160_169_and_the_converters" (function()
  equal(traces '"oltmib_devinfo_get_1", "a&b"',
    "[lua_callapi: 160]name oltmib_devinfo_get_1, str a&b.\r\n" ..
    "[lua_callapi: 169]" .. functions_of "oltmib_devinfo_get_1" .. ".\r\n" ..
    "[str2arg_devinfo: 28]save config 0, hostname , oper 0.\r\n" ..
    "[arg2str_devinfo: 37]str: OLT-8G&SN20260117-0042&00-1E-80-4C-00-01&1.4.2&2.0.1&V3&0&86400&olt-lab-1&0.\r\n")
end)

case "client_that_cannot_be_made_prints_line_171" (function()
  tell "stop vrrpinfo"
  -- which of stdout and stderr comes first in one pipe is the C library's affair
  local text = traces '"oltmib_vrrp_ssstate_get_1", "1"'
  local reason = "127.0.0.1: RPC: Program not registered\n"
  local before, behind = text:find(reason, 1, true)
  equal(before and text:sub(before, behind), reason, "reason")
  equal(text:sub(1, before - 1) .. text:sub(behind + 1),
    "[lua_callapi: 160]name oltmib_vrrp_ssstate_get_1, str 1.\r\n" ..
    "[lua_callapi: 169]" .. functions_of "oltmib_vrrp_ssstate_get_1" .. ".\r\n" ..
    "[lua_callapi: 171]oltmib_vrrp_ssstate_get_1 clnt init failed.\r\n")
end)

case "failed_call_prints_line_181" (function()
  tell "fault vrrpinfo error garbage_args"
  equal(traces '"oltmib_vrrp_ssstate_get_1", "1&0&0&2"',
    "[lua_callapi: 160]name oltmib_vrrp_ssstate_get_1, str 1&0&0&2.\r\n" ..
    "[lua_callapi: 169]" .. functions_of "oltmib_vrrp_ssstate_get_1" .. ".\r\n" ..
    "[str2arg_vrrp_ssstate: 58]vrid 1, role 2, oper 0.\r\n" ..
    "[lua_callapi: 181]oltmib_vrrp_ssstate_get_1 func called failed.\r\n")
end)

case "no_dispatch_path_prints_with_debug_off" (function()
  tell "stop vrrpinfo"
  tell "fault lpdet error system_err"
  local text = run [[
    librpc.enabledebug()
    librpc.disabledebug()
    librpc.callapi("oltmib_nothing_get_1", "")
    librpc.callapi("oltmib_devinfo_get_1", "")
    librpc.callapi("oltmib_devinfo_set_1", "a&b")
    librpc.callapi("oltmib_lpdet_global_get_1", "")
    librpc.callapi("oltmib_vrrp_ssstate_get_1", "1")
  ]]
  equal(text, "127.0.0.1: RPC: Program not registered\n") -- of the missing daemon, on standard error
end)

case "debug_flag_persists_until_it_is_changed" (function() -- with every interpreter
  local text = run [[
    print(select("#", librpc.enabledebug("ignored", 1)))
    librpc.callapi("a", "1")
    librpc.callapi("b", "2")
    print(select("#", librpc.disabledebug({})))
    librpc.callapi("c", "3")
  ]]
  equal(text, "0\n[lua_callapi: 160]name a, str 1.\r\n[lua_callapi: 165]api a not found.\r\n" ..
    "[lua_callapi: 160]name b, str 2.\r\n[lua_callapi: 165]api b not found.\r\n0\n")
end)

case "empty_argument_sends_an_all_zero_record" (function()
  call("oltmib_devinfo_get_1", "")
  call("oltmib_telnet_get_1", "")
  equal(shell "cat $SIM_LOG",
    "1 50002 1 oltmib_devinfo_get_1 &&00-00-00-00-00-00&&&&0&0&&0&0\n2 50006 2 oltmib_telnet_get_1 0&&0&&&&&0&0\n")
end)

case "argument_that_is_no_string_raises_the_argument_error" (function() -- with every interpreter
  local bad = { {}, true, print, coroutine.create(function() end) }
  for _, value in ipairs(bad) do
    local ok, message = pcall(call, value, "x")
    equal(ok, false, "first argument")
    equal(message, ("bad argument #1 to '?' (string expected, got %s)"):format(type(value)))
    ok, message = pcall(call, "oltmib_devinfo_get_1", value)
    equal(ok, false, "second argument")
    equal(message, ("bad argument #2 to '?' (string expected, got %s)"):format(type(value)))
  end
  local ok, message = pcall(call)
  equal(ok, false, "no argument")
  equal(message, "bad argument #1 to '?' (string expected, got no value)")
  ok, message = pcall(call, "oltmib_devinfo_get_1", nil)
  equal(ok, false, "nil")
  equal(message, "bad argument #2 to '?' (string expected, got nil)")
  equal(calls(), 0, "executions")
end)

case "numbers_are_taken_as_text_and_more_arguments_ignored" (function() -- with every interpreter
  equal(call("oltmib_vlaninfo_get_1", 10):match("^%d+&%d+&voice"), "10&1&voice", "number")
  equal(select("#", call(12, 13)), 0, "number as a name")
  equal(select("#", call("oltmib_vlaninfo_get_1", "1", {}, print)), 1, "values")
end)

case "embedded_nul_ends_name_and_argument" (function() -- with every interpreter
  equal(call("oltmib_vlaninfo_get_1\0junk", "10&\0" .. "9&9"):match("^%d+&%d+&voice"), "10&1&voice")
end)

case "second_opening_keeps_the_same_names_and_works" (function() -- with every interpreter
  local text = run [[
    local first = librpc
    librpc.showapi()
    local open = assert(package.loadlib(package.searchpath and package.searchpath("librpc", package.cpath) or
      package.cpath:match("([^;]*)%?%.so") .. "librpc.so", "luaopen_librpc"))
    print("again", open() == first, librpc == first)
    librpc.showapi()
    print(librpc.callapi("oltmib_devcapint_get_1", "ports"))
  ]]
  local before, same, after = text:match("^(.-)again\t([^\n]*)\n(.*)$")
  equal(same, "true\ttrue", "the table")
  equal(after, before .. "ports&Number of ports&8&&&0&0\n", "the registry and a reply")
end)

case "showapi_lists_every_api_in_the_order_of_registration" (function()
  local text = harness.without_addresses(run "librpc.showapi() librpc.enabledebug() librpc.showapi()")
  local names = {}
  for line in text:gmatch("([^\n]*)\n") do
    local name = line:match("^name ([%w_]+),")
    equal(line, functions_of(name) .. "\r", "line")
    names[#names + 1] = name
  end
  -- once, and once more with debugging on
  local expected = golden.column("apis.txt", 2)
  equal(#names, 2 * #expected, "lines")
  for i, name in ipairs(names) do
    equal(name, expected[(i - 1) % #expected + 1], "line " .. i)
  end
end)

case "result_of_one_call_survives_the_next" (function() -- with every interpreter
  local first = call("oltmib_vlaninfo_get_1", "1")
  local kept = first .. ""
  call("oltmib_vlaninfo_get_1", "10")
  equal(first, kept)
end)
