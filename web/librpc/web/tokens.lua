-- Tokens that a change has to carry: a random text for each user and day, which only
-- a page of the gateway's own origin can read. Each is a file in a folder that nobody
-- but the web server's user may enter; a day's token is taken on the next day, too.
local refusals = require "librpc.web.refusals"

local tokens = {}

local day_seconds = 86400
local random_bytes = 24

-- A user's name as a file's.
local function hex(text)
  return (text:gsub(".", function(character)
    return ("%02x"):format(character:byte())
  end))
end

local function path_of(site, user, day)
  return ("%s/%s.%d"):format(site.state, hex(user or ""), day)
end

local function today()
  return math.floor(os.time() / day_seconds)
end

local function read(path, size)
  local file = io.open(path, "rb")
  local text = file and file:read(size)
  if file then
    file:close()
  end
  return text
end

-- Makes the file of a token where there is none yet: of several processes that try,
-- one succeeds, and a file that is there is whole. Those of days before yesterday go.
-- The token goes to the shell over a pipe: its command line is anybody's to see.
local function make(site, path, token)
  local folder = site.state
  local shell = io.popen(("umask 077; mkdir -p '%s' 2>/dev/null; cd '%s' 2>/dev/null || exit; "
    .. "find . -name '*.*' -mtime +1 -exec rm -f {} +; cat >new.$$ && ln new.$$ '%s' 2>/dev/null; rm -f new.$$")
    :format(folder, folder, path), "w")
  shell:write(token)
  shell:close()
end

-- The user's token of today; nil and a refusal where none can be kept.
function tokens.of(site, user)
  local path = path_of(site, user, today())
  local token = read(path, 2 * random_bytes)
  if not token then
    local bytes = read("/dev/urandom", random_bytes)
    if not bytes or #bytes < random_bytes then
      return refusals.make("no_token")
    end
    make(site, path, hex(bytes))
    token = read(path, 2 * random_bytes)
  end
  if not token or #token ~= 2 * random_bytes then
    return refusals.make("no_token", nil, nil, { log = "state: expected a folder that can be written, found "
      .. site.state })
  end
  return token
end

-- Whether two texts are the same, in a time that does not tell where they differ.
local function same(a, b)
  local difference = #a == #b and 0 or 1
  for i = 1, math.min(#a, #b) do
    difference = difference + math.abs(a:byte(i) - b:byte(i))
  end
  return difference == 0
end

-- Whether a text is the user's token of today or yesterday.
function tokens.are_right(site, user, text)
  local right = false
  for day = today() - 1, today() do
    local token = read(path_of(site, user, day), 2 * random_bytes)
    right = token and #token == 2 * random_bytes and same(token, text) or right
  end
  return right
end

return tokens
