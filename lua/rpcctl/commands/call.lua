-- rpcctl call: an API's texts as they are.
local calls = require "librpc.calls"
local ending = require "rpcctl.ending"
local names = require "librpc.names"
local output = require "rpcctl.output"
local problems = require "librpc.record.problems"
local schema = require "librpc.schema"

-- The fields of a reply's text; nil where it has not as many as the API's.
local function parts_of(api, text)
  local parts, from = {}, 1
  repeat
    local at, last = text:find(api.separator, from, true)
    parts[#parts + 1] = text:sub(from, (at or 0) - 1)
    from = (last or 0) + 1
  until not at
  return #parts == #api.output and parts or nil
end

-- A reply's text with its secrets replaced; nil where its fields cannot be told apart.
local function without_secrets(api, text, secret)
  local parts = parts_of(api, text)
  for i, position in ipairs(parts and api.output or {}) do
    if secret[position.name] and parts[i] ~= "" then
      parts[i] = "(set)"
    end
  end
  return parts and table.concat(parts, api.separator)
end

return {
  name = "call",
  summary = "call an API with an argument's text, and print the reply's",
  details = "Control characters are printed as \\x1b, \\n and so on, a backslash as \\\\.",
  arguments = { { "API", what = "API" }, { "ARGUMENT", optional = true } },
  options = {
    { "raw", nil, "print every byte as it came" },
    { "json", nil, "print a JSON string" },
    { "show-secrets", nil, "print secrets, not (set)" },
  },
  examples = { { "rpcctl call oltmib_vlaninfo_get_1 10", "VLAN 10 as the library gives it to Lua" } },
  run = function(words, options)
    local api = schema.api(words[1])
    if not api then
      ending.give_up(select(2, problems.unknown_api(words[1])), "unknown_api")
    end
    local texts, failures = calls.all({ { api.name, words[2] or "" } }, options.call_seconds)
    local text = texts[1]
    if not text then
      ending.give_up(failures[1].message, failures[1].code)
    end
    local view = ending.need(names.view(api.table))
    if not options["show-secrets"] and api.output and next(view.secret) then
      text = without_secrets(api, text, view.secret)
      if not text then
        ending.give_up(api.name .. ": expected a reply whose secrets can be told apart, found another; "
          .. "--show-secrets prints it", "failed")
      end
    end
    if options.json then
      return ending.write(output.json(text), "\n")
    end
    ending.write(options.raw and text or output.printable(text), "\n")
  end,
}
