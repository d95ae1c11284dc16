-- How the rows of one table read, of which names say something.
local views = {}

-- What the names say of one field.
local function add_field(view, field, facts)
  local name = facts.name or field
  if name ~= field then
    view.name[field], view.field[name] = name, field
    view.plain = false
  end
  if name == "res" or name == "oper" then
    view[name] = field
  end
  if facts.values then
    view.words[field], view.numbers[field] = facts.values, {}
    for number, word in pairs(facts.values) do
      view.numbers[field][word] = number
    end
    view.plain = false
  end
  view.secret[field], view.exact[field] = facts.secret, facts.exact
end

-- How one table's rows read, each map by the field's name in the schema but
-- `field`, which goes from a given name to it:
--   name, field, words (word of a number), numbers (number of a word), secret, exact
--   key       the fields that say which row, nil where nobody said
--   ends      the results with which a walk ends, as a set, nil where nobody said
--   res, oper the fields that carry the daemon's result and the operation
--   plain     true where the rows read as they come; else
--   present   makes of a row by the schema's names what its reader gets: the given
--             names, and words for numbers
function views.of(entry, every)
  local view = { name = {}, field = {}, words = {}, numbers = {}, secret = {}, exact = {},
    res = "res", oper = "oper", plain = true }
  for field, facts in pairs(entry.fields) do
    add_field(view, field, facts)
  end
  view.key = entry.key
  local ends = entry.ends or every.ends
  if ends then
    view.ends = {}
    for _, result in ipairs(ends) do
      view.ends[result] = true
    end
  end
  -- a row answers to the schema's names too, with its numbers
  local row_names = {
    __index = function(row, field)
      local value = rawget(row, view.name[field])
      local numbers = view.numbers[field]
      return numbers and numbers[value] or value
    end,
    __newindex = function(row, field, value)
      rawset(row, view.name[field] or field, value)
    end,
  }
  function view.present(row)
    local presented = {}
    for field, value in pairs(row) do
      local words = view.words[field]
      presented[view.name[field] or field] = words and words[value] or value
    end
    return setmetatable(presented, row_names)
  end
  return view
end

return views
