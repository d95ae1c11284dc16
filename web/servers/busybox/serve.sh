#!/bin/sh
# The console and the gateway by the small web server of many devices, for this machine alone. The
# console is http://127.0.0.1:8080/cgi-bin/librpc.cgi/index.html, where / leads. The users are lines
# of /etc/librpc/httpd.conf: /:NAME:HASH OF THE PASSWORD
exec busybox httpd -f -p 127.0.0.1:8080 -u www-data:www-data -r device -c /etc/librpc/httpd.conf \
  -h /usr/share/librpc-web/servers/busybox/www
