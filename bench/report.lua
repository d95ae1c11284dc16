-- The run's figures as tables, each beside what it is meant to reach; shown on
-- the terminal and as Markdown alike.
local report = {}

local largest_from = 2000 -- units, from which a record counts as large

local function limits_of(api)
  if math.max(api.request, api.reply) >= largest_from then
    return { echo = 1.40, plain = 0.30 }
  end
  return { echo = 1.25, plain = 0.75 }
end

local function verdict(value, limit)
  if value <= limit then
    return "met"
  end
  return ("%.1f%% over"):format((value / limit - 1) * 100)
end

local function units_of(api)
  return ("%d + %d"):format(api.request, api.reply)
end

local function microseconds(value)
  return ("%.2f"):format(value)
end

local function whole(value)
  return ("%d"):format(math.floor(value + 0.5))
end

-- The floor is what a client that does nothing but send and receive would reach
-- against the plain way.
local function calls(results)
  local rows = {}
  for _, row in ipairs(results.calls) do
    local limit = limits_of(row.api)
    local by_echo, by_plain = row.library / row.echo, row.library / row.plain
    rows[#rows + 1] = {
      row.api.name,
      units_of(row.api),
      microseconds(row.library),
      microseconds(row.echo),
      microseconds(row.plain),
      microseconds(by_echo),
      ("%.2f: %s"):format(limit.echo, verdict(by_echo, limit.echo)),
      microseconds(by_plain),
      ("%.2f: %s"):format(limit.plain, verdict(by_plain, limit.plain)),
      microseconds(row.echo / row.plain),
      ("%.1f%%"):format(row.spread * 100),
    }
  end
  return {
    title = "Microseconds a call",
    head = { "API", "units", "library", "echo", "plain", "x echo", "at most", "x plain", "at most", "floor", "spread" },
    rows = rows,
  }
end

local function times(results)
  local rows = {}
  for _, row in ipairs(results.calls) do
    local split = results.instructions[row.api.name].librpc.split
    local own = row.library - row.echo
    local function share(part)
      return microseconds(own * split[part] / split.total)
    end
    rows[#rows + 1] = {
      row.api.name,
      microseconds(row.library),
      microseconds(row.echo),
      microseconds(own),
      share("library"),
      share("libc"),
      share("Lua"),
      share("libtirpc"),
    }
  end
  return {
    title = "Where each microsecond goes",
    head = { "API", "call", "kernel and daemon", "the rest", "library", "libc", "Lua", "libtirpc" },
    rows = rows,
  }
end

local function instructions(results)
  local rows = {}
  for _, row in ipairs(results.calls) do
    for _, way in ipairs({ "librpc", "plain" }) do
      local split = results.instructions[row.api.name][way].split
      rows[#rows + 1] = {
        row.api.name,
        way == "librpc" and "library" or "plain",
        whole(split.total),
        whole(split.library),
        whole(split.libtirpc),
        whole(split.Lua),
        whole(split.libc),
        whole(split.other),
      }
    end
  end
  return {
    title = "Instructions a call, in user space",
    head = { "API", "way", "all", "own code", "libtirpc", "Lua", "libc", "other" },
    rows = rows,
  }
end

-- The library's and libc's dearest functions of each call.
local function functions(results)
  local most, rows = 8, {}
  for _, row in ipairs(results.calls) do
    local names = {}
    for _, entry in ipairs(results.instructions[row.api.name].librpc.functions) do
      if #names < most and (entry.part == "library" or entry.part == "libc") then
        names[#names + 1] = ("%s %s"):format(entry.name, whole(entry.cost))
      end
    end
    rows[#rows + 1] = { row.api.name, table.concat(names, ", ") }
  end
  return { title = "The dearest functions of a call", head = { "API", "instructions" }, rows = rows }
end

local function system_calls(results)
  local rows = {}
  for _, entry in ipairs(results.syscalls) do
    rows[#rows + 1] = {
      entry.api,
      entry.way == "librpc" and "library" or "plain",
      ("%g"):format(entry.kept.total),
      entry.kept.list,
      entry.way == "librpc" and "2: " .. verdict(entry.kept.total, 2) or "",
      whole(entry.first.total),
      entry.first.list,
    }
  end
  return {
    title = "System calls a call",
    head = { "API", "way", "kept client", "which", "at most", "first call", "which" },
    rows = rows,
  }
end

local function start(results)
  local from = results.startup
  local tirpc, library = from.tirpc - from.bare, from.library - from.bare
  return {
    title = "Start",
    head = { "what", "found", "at most" },
    rows = {
      { "a bare lua5.1, processor us", whole(from.bare), "" },
      { "libtirpc alone over it, us", whole(tirpc), "" },
      { "the library over it, us", whole(library), "" },
      {
        "a lua5.1 with the library, x one with libtirpc alone",
        microseconds(from.library / from.tirpc),
        "1.10: " .. verdict(from.library / from.tirpc, 1.10),
      },
      {
        "loading the library, x loading libtirpc alone",
        microseconds(library / tirpc),
        "1.10: " .. verdict(library / tirpc, 1.10),
      },
      { "luaopen_librpc alone, us", whole(from.opening), "100: " .. verdict(from.opening, 100) },
      { "relocations at load", whole(results.size.relocations), "" },
      { "of these by name", whole(results.size.by_name), "" },
    },
  }
end

-- Parts of a page's processor time, each over the one before it.
local function page(results)
  local first, from = results.pages.first, results.pages.processes
  local function beside(value, other, most)
    return microseconds(value / other), most and ("%.2f: %s"):format(most, verdict(value / other, most)) or ""
  end
  local rows = {
    { ("first calls of %d services with bare sockets, us"):format(first.services), whole(first.sockets), "" },
    { "the same by the library, us", whole(first.library), "" },
    { "the library, x the bare sockets", beside(first.library, first.sockets, 1.3) },
    { "a page: a process that reads five services, processor us", whole(from.page), "" },
    { "- the interpreter", whole(from.bare), "" },
    { "- libtirpc and the libraries that it pulls in", whole(from.tirpc - from.bare), "" },
    { "- the library and its registrations", whole(from.library - from.tirpc), "" },
    { "- the calls", whole(from.page - from.library), "" },
    { "a page, x a bare lua5.1", beside(from.page, from.bare) },
    { "a page with one call, processor us", whole(from.plain), "" },
    { "the same with named fields", whole(from.named), "" },
    { "with named fields, x without", beside(from.named, from.plain, 1.35) },
  }
  return { title = "A page", head = { "what", "found", "at most" }, rows = rows }
end

local function size(results)
  local from = results.size
  local most = 200 * 1024
  local rows = { { "librpc.so, stripped", whole(from.bytes), "204800: " .. verdict(from.bytes, most) } }
  for _, part in ipairs(from.parts) do
    rows[#rows + 1] = { "- " .. part.name, whole(part.bytes), "" }
  end
  rows[#rows + 1] = { "zeroed memory (records and texts)", whole(from.zeroed), "" }
  rows[#rows + 1] = { "resident after a call of every API", whole(from.resident * 1024), "" }
  rows[#rows + 1] = { "- of this its own copies", whole(from.private * 1024), "" }
  return { title = "Size in bytes", head = { "what", "found", "at most" }, rows = rows }
end

local function growth(results)
  local rows = {}
  for _, row in ipairs(results.by_size) do
    rows[#rows + 1] = {
      row.api.name,
      whole(row.api.reply),
      microseconds(row.library),
      microseconds(row.echo),
      microseconds(row.library / row.echo),
    }
  end
  return {
    title = "Growth with the record",
    head = { "API", "units", "library", "echo", "x echo" },
    rows = rows,
  }
end

local function registry(results)
  local rows, first = {}, results.by_registry[1]
  for _, row in ipairs(results.by_registry) do
    rows[#rows + 1] = {
      whole(row.apis),
      microseconds(row.call),
      whole(row.look_up),
      microseconds(row.look_up / first.look_up),
    }
  end
  return {
    title = "Growth with the registry",
    head = { "APIs", "call, us", "look-up, ns", "x the first" },
    rows = rows,
  }
end

-- Every table of the results, by its name and in order.
function report.tables(results)
  local list = {
    { "calls", calls },
    { "times", times },
    { "instructions", instructions },
    { "functions", functions },
    { "syscalls", system_calls },
    { "start", start },
    { "page", page },
    { "size", size },
    { "growth", growth },
    { "registry", registry },
  }
  local tables = {}
  for i, entry in ipairs(list) do
    tables[i] = entry[2](results)
    tables[entry[1]] = tables[i]
  end
  return tables
end

local function is_number(text)
  return text:match("^[%d.]+%%?$") ~= nil
end

-- A table in columns for a terminal; numbers stand to the right.
function report.as_text(one)
  local widths, lines = {}, { one.title }
  local all = { one.head, unpack(one.rows) }
  for _, row in ipairs(all) do
    for i, cell in ipairs(row) do
      widths[i] = math.max(widths[i] or 0, #cell)
    end
  end
  for _, row in ipairs(all) do
    local cells = {}
    for i, cell in ipairs(row) do
      local padding = (" "):rep(widths[i] - #cell)
      cells[i] = is_number(cell) and padding .. cell or cell .. padding
    end
    lines[#lines + 1] = "  " .. table.concat(cells, "  "):gsub("%s+$", "")
  end
  return table.concat(lines, "\n") .. "\n"
end

function report.as_markdown(one)
  local lines = { "| " .. table.concat(one.head, " | ") .. " |", "|" .. ("---|"):rep(#one.head) }
  for _, row in ipairs(one.rows) do
    lines[#lines + 1] = "| " .. table.concat(row, " | ") .. " |"
  end
  return table.concat(lines, "\n")
end

-- The template with each @name@ filled: by the table of that name, or by `words`.
function report.fill(template, tables, words)
  return (template:gsub("@(%l+)@", function(name)
    local value = tables[name] and report.as_markdown(tables[name]) or words[name]
    if not value then
      error(("bench: template: expected a table's name, found @%s@"):format(name), 0)
    end
    return value
  end))
end

return report
