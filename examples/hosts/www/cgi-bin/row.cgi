#!/usr/bin/env lua5.1
-- The page as a CGI program, for every web server that runs such: the request
-- comes in the environment, the answer goes to standard output.
package.path = "/srv/librpc/?.lua;" .. package.path
local status, text = require "page".row(os.getenv("QUERY_STRING"))
io.write("Status: ", status, "\r\nContent-Type: text/plain\r\n\r\n", text)
