-- An example of /etc/librpc/web.lua: every word, with what holds where it is not there.
-- docs/web.md tells what they mean.
return {
  everybody = { read = "*", change = {} },
  users = {},
  groups = {},
  without_user = false,
  without_names = false,
  origins = {},
  log = "syslog",
  state = "/run/librpc-web",
  metrics = {},
  limits = { seconds = 25, deadline = 1, rows = 20000, calls = 64, body = 65536 },
}
