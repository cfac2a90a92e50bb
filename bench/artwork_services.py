#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
# The four picture services on a loopback port, for bench_artwork.sh: every
# artist has a Wikipedia thumbnail and every album a release with a front
# cover. Each request is logged as "<seconds since start> <service> <target>"
# to the log file given. Usage: artwork_services.py PORT_FILE LOG_FILE PICTURE
import json
import sys
import threading
import time
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

port_file, log_file, picture_file = sys.argv[1:4]
picture = open(picture_file, "rb").read()
started = time.monotonic()
lock = threading.Lock()
log = open(log_file, "a", buffering=1)


class Services(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *args):
        pass

    def answer(self, body, kind="application/json"):
        self.send_response(200)
        self.send_header("Content-Type", kind)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def do_GET(self):
        service = self.path.split("/")[1]
        with lock:
            log.write(f"{time.monotonic() - started:.3f} {service} {self.path}\n")
        base = f"http://127.0.0.1:{self.server.server_port}"
        if service == "wiki":
            page = {"pageid": 1, "thumbnail": {"source": f"{base}/upload/thumb.png"}}
            self.answer(json.dumps({"query": {"pages": {"1": page}}}).encode())
        elif service == "mb":
            self.answer(json.dumps({"releases": [{"id": "release-1"}]}).encode())
        elif service in ("caa", "upload"):
            self.answer(picture, "image/png")
        else:
            self.send_error(404)


server = ThreadingHTTPServer(("127.0.0.1", 0), Services)
with open(port_file, "w") as f:
    f.write(str(server.server_port))
server.serve_forever()
