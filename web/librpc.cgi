#!/usr/bin/lua5.1
-- The gateway for every web server that runs CGI programs; docs/web.md tells how.
local folder = arg[0]:match("^(.*)/[^/]*$") or "."
package.path = folder .. "/?.lua;" .. package.path
local compiled = loadfile(folder .. "/librpc.luac") -- see bundle.lua
if compiled then
  compiled()
end
require "librpc.web.cgi"(folder)
