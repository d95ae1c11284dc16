-- Rows, failures and values as JSON: the only place where what the device holds
-- becomes part of an answer. Secrets are left out here.
local json = require "librpc.web.json"

local cells = {}

-- By the table's view and the API's output, which tables may share.
local templates = setmetatable({}, { __mode = "k" })

-- How a row of the API is written: a list of { name, the text before the value, secret }.
local function template_of(api, view)
  local of_view = templates[view]
  if not of_view then
    of_view = setmetatable({}, { __mode = "k" })
    templates[view] = of_view
  end
  local template = of_view[api.output]
  if not template then
    template = {}
    for i, position in ipairs(api.output) do
      local name = view.name[position.name] or position.name
      template[i] = { name, (i > 1 and "," or "") .. json.encode(name) .. ":", view.secret[position.name] }
    end
    of_view[api.output] = template
  end
  return template
end

-- A value as a page gets it: numbers, words and texts as they are, lists as arrays.
function cells.value(value)
  if type(value) == "table" then
    return json.array(value)
  elseif value == nil then
    return json.null
  end
  return value
end

-- A row as it was read by the API, in the record's order.
function cells.row(api, view, row)
  local out = { "{" }
  for _, field in ipairs(template_of(api, view)) do
    out[#out + 1] = field[2]
    out[#out + 1] = field[3] and "null" or json.encode(cells.value(row[field[1]]))
  end
  out[#out + 1] = "}"
  return json.raw(table.concat(out))
end

function cells.rows(api, view, rows)
  local list = {}
  for i, row in ipairs(rows) do
    list[i] = cells.row(api, view, row)
  end
  return json.array(list)
end

-- The field that a message of librpc.record names, or nil.
function cells.field_of(message)
  return message:match("^oltmib_[%w_]+: ([%a_][%w_]*): expected ")
end

-- Why one item has no answer.
function cells.failure(code, message)
  return { failure = { code = code, message = message, field = cells.field_of(message) } }
end

-- A value of a caller's that goes into an answer or the log: hidden where its field is secret.
function cells.shown(view, name, value)
  if view.secret[view.field[name] or name] then
    return { secret = true }
  end
  return cells.value(value)
end

return cells
