---@meta librpc.status
-- Annotations for editors (LuaLS); nothing loads this file.
-- Made by the target `describe`; change tools/describe/module_annotations.cpp instead.

---Why a call gave no value.
---@alias librpc.code
---| "unknown_api" # no API of that name is registered
---| "out_of_memory" # there was not enough memory for the call
---| "no_portmapper" # the port mapper does not answer, so no daemon can be found
---| "no_daemon" # the daemon has not registered with the port mapper
---| "no_client" # no client could be made for the daemon
---| "timed_out" # the daemon did not answer in time; it may still carry the call out
---| "refused" # nothing listens on the port that the daemon had
---| "interrupted" # a signal ended the wait for the daemon; it may still carry the call out
---| "rejected" # the daemon answered that it will not or cannot carry the call out
---| "bad_reply" # the daemon's answer is not this call's reply
---| "failed" # the call could not be made
---| "not_sent" # the wait was over before the call's turn came; it was not sent, so it may be repeated
---| "host_api" # the API is made of a host program's own functions, which cannot run beside other calls
---| "closed" # the group was closed, or it is the parent's of this forked process

---@class librpc.status.details
---@field api string
---@field service? string
---@field program? integer
---@field reason? string # the RPC library's own words
---@field errno? integer

---@class librpc.status
---@field codes table<librpc.code, string> # what each code means
local status = {}

---Why the last callapi gave no value.
---@return librpc.code? code # nil after a success
---@return string? sentence
---@return librpc.status.details? details
function status.last() end

return status
