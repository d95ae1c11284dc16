-- A service's first call, with a real port mapper: what it needs of the system,
-- and what many of them at once get.
local harness = require "harness"
local process = require "e2e_process"
local case, call, equal, shell = harness.case, harness.call, harness.equal, harness.shell

-- One API of each service. Their requests are small: forty of them at once fit
-- the daemon's socket, and a call is sent but once.
local apis = {
  "oltmib_erpsprof_get_1", "oltmib_portinfo_get_1", "oltmib_devinfo_get_1", "oltmib_dyinggasp_get_1",
  "oltmib_alert_get_1", "oltmib_igmpsnp_fastleave_get_1", "oltmib_mstp_global_get_1", "oltmib_poeinfo_get_1",
  "oltmib_auth_global_get_1", "oltmib_route_get_1", "oltmib_vrrp_ssstate_get_1", "oltmib_sdsminfo_get_1",
  "oltmib_ioctlinfo_get_1", "oltmib_dhcpsnp_get_1", "oltmib_lpdet_global_get_1",
}

-- Runs a call of every service in another interpreter, in a mount namespace
-- where `hide` was done first, and in one where nothing was.
local function expect_same_without(hide, where)
  local code = [[
    require "librpc"
    for name in ("%s"):gmatch("%%S+") do print(name, librpc.callapi(name, "1")) end
  ]]
  local name = os.tmpname()
  local file = assert(io.open(name, "w"))
  file:write(code:format(table.concat(apis, " ")))
  file:close()
  local expected = shell("$E2E_INTERPRETER " .. name)
  equal(select(2, expected:gsub("\n", "")), #apis, "lines: " .. expected)
  local text, status = shell("unshare -m sh -c '" .. hide .. " && exec $E2E_INTERPRETER " .. name .. "'")
  os.remove(name)
  equal(text, expected, where)
  equal(status, 0, where)
end

case "services_hosts_and_the_other_network_files_may_be_missing" (function()
  expect_same_without("for file in services netconfig nsswitch.conf hosts; do [ ! -e /etc/$file ] || " ..
    "mount --bind /dev/null /etc/$file || exit; done", "empty files")
  expect_same_without("mount -t tmpfs none /etc", "an empty folder")
end)

-- The local ports of the sockets that are connected to one of those ports.
local function ports_of_clients(daemons)
  local ports, count = {}, 0
  for line in io.lines("/proc/net/udp") do
    local mine, port = line:match("^%s*%d+: 0100007F:(%x+) 0100007F:(%x+)")
    if mine and daemons[tonumber(port, 16)] then
      equal(ports[mine], nil, "second socket on port " .. mine)
      ports[mine] = true
      count = count + 1
    end
  end
  return count
end

case "fifteen_clients_in_each_of_forty_processes_at_once" (function()
  local daemons = {}
  for line in shell("$SIM_DEVICE --tables"):gmatch("[^\n]+") do
    local service = line:match("^%S+")
    if not daemons[service] then
      daemons[service] = true
      daemons[tonumber(harness.tell("port " .. service))] = true
    end
  end
  local children = {}
  for i = 1, 40 do
    children[i] = process.fork()
    if children[i] == 0 then
      local ok, message = pcall(function()
        for round = 1, 2 do
          for _, name in ipairs(apis) do
            equal(type((call(name, i % 8 + 1))), "string", name .. ", round " .. round)
          end
          local port = i % 8 + 1
          equal(call("oltmib_portinfo_get_1", port):match("^%d+&ge%d+&"), ("%d&ge%d&"):format(port, port), "port")
        end
      end)
      if not ok then io.stderr:write(message, "\n") end
      assert(io.open("/run/ready." .. i, "w")):close()
      shell("while [ ! -e /run/go ]; do sleep 0.05; done")
      process.exit(ok and 0 or 1)
    end
  end
  shell("while [ $(ls /run/ready.* 2>/dev/null | wc -l) -lt 40 ]; do sleep 0.05; done")
  local count = ports_of_clients(daemons)
  assert(io.open("/run/go", "w")):close()
  for i, child in ipairs(children) do
    equal(process.wait(child), 0, "status of process " .. i)
  end
  equal(count, 600, "sockets")
end)
