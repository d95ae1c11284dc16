---@meta librpc.calls
-- Annotations for editors (LuaLS); nothing loads this file.
-- Made by the target `describe`; change tools/describe/module_annotations.cpp instead.

---Why a call has no text, or a row is none.
---@class librpc.failure
---@field code librpc.code|string # of librpc.status.codes, with named fields of librpc.record.codes too
---@field message string
---@field details? librpc.status.details

---@class librpc.calls
local calls = {}

---Calls APIs at once. Raises an error for a list that is none, and for two sets of one table.
---@param list { [1]: librpc.api|string, [2]: string|number|nil }[] # each { name [, argument] }
---@param seconds? number # a deadline for all; 25 if not given
---@return (string|false)[] texts # in the list's order; false where there is none
---@return table<integer, librpc.failure> failures # why, by the same place
function calls.all(list, seconds) end

---A call's datagram, for a host that has a socket of its own.
---@param name librpc.api|string
---@param argument string|number
---@return string? datagram
---@return string address # to send it to; of a call that cannot be made the message
---@return integer|string port # of a call that cannot be made the code
---@return librpc.calls.message? message
function calls.message(name, argument) end

---Calls the null procedure of every service at once.
---@param seconds? number # 25 if not given
---@return librpc.calls.service[]
function calls.services(seconds) end

---@class librpc.calls.service
---@field service string
---@field title string
---@field program integer
---@field port? integer # of a daemon that was found
---@field seconds? number # that its answer took
---@field failure? librpc.failure

---Calls that begin and end at any time.
---@return librpc.calls.group
function calls.group() end

---@class librpc.calls.group
local group = {}

---Begins a call.
---@param name librpc.api|string
---@param argument string|number
---@param seconds? number # its deadline from now, the time in the queue included; 25 if not given
---@return integer? id
---@return string? message # where it cannot begin
---@return librpc.code? code
function group:call(name, argument, seconds) end

---The calls that have ended, each exactly once, for use with `for`. Never waits.
---@return fun(): integer?, string|false, librpc.failure?, number # id, text, failure, seconds
function group:finished() end

---Waits until a call has ended.
---@param seconds? number # without a limit if not given
---@return boolean? ended # false where the time is over or nothing is open
---@return string? message # where the group is closed
---@return librpc.code? code
function group:wait(seconds) end

---A descriptor, the same for the group's life, that is readable when there is something to do.
---@return integer? descriptor
---@return string? message
---@return librpc.code? code
function group:pollfd() end

---@return "r"
function group:events() end

---Seconds until there is something to do; nil where nothing is open.
---@return number?
function group:timeout() end

---Gives the open calls up.
function group:close() end

---@class librpc.calls.message
local message = {}

---What a datagram that the host received says.
---@param datagram string
---@return string|false|nil text # nil: not this call's datagram; false: a failure
---@return librpc.failure? failure
function message:reply(datagram) end

---Has the daemon's port asked for again by the next message.
function message:lost() end

return calls
