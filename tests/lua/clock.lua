-- How long something takes, for the tests whose subject is a deadline. A busy machine
-- may wake anybody late: as late as a program that only sleeps so long.
local clock = {}

-- Seconds of a clock that goes on while the process waits, to a hundredth.
function clock.now()
  local file = assert(io.open("/proc/uptime"))
  local seconds = file:read("*n")
  file:close()
  return seconds
end

-- Runs `body`: true where it ends no sooner than `seconds` later, and less than half
-- a second after that; else what it took. Valgrind takes whatever time it likes.
function clock.takes(seconds, body)
  local started = clock.now()
  local sleeper = io.popen(("sleep %.2f; cat /proc/uptime"):format(seconds))
  body()
  local taken = clock.now() - started
  local slept = sleeper:read("*n") - started
  sleeper:close()
  local is_soon = taken < math.max(slept, seconds) + 0.5 or os.getenv "LIBRPC_TEST_UNDER"
  if taken >= seconds - 0.02 and is_soon then
    return true
  end
  return ("%.2f seconds, and a program that sleeps %.2f takes %.2f"):format(taken, seconds, slept)
end

return clock
