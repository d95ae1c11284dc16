#!/bin/sh
# The small web server of many devices, with CGI: a process for each request. It stays in the
# foreground; what it serves lies in /srv/librpc/www.
exec busybox httpd -f -p 127.0.0.1:8080 -u nobody:nogroup -h /srv/librpc/www
