#!/bin/sh
# Hands on to the program, which finds its modules beside itself.
exec /usr/share/librpc-web/librpc.cgi
