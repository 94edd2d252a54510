"""An update server on loopback that answers well or badly, as the first part of the requested path says.

Usage: update_server.py <folder>

The folder is the one that make_authority has filled. Writes the three ports (https, https with a certificate that nobody trusts, http)
to <folder>/ports and one line for every request to <folder>/requests. Ends when its standard input is closed.
"""

import http.server
import os
import socket
import ssl
import sys
import threading
import time

FOLDER = sys.argv[1]
STALL_SECONDS = 120
SLOW_SECONDS = 2

# The text that a scenario answers to a version request, for the release and the beta channel.
VERSIONS = {
    "good": (b"0.0.2.8", b"0.0.2.9\r\n"),
    "same": (b"0.0.2.7", b"0.0.2.7"),
    "wordy": (b"Version: 0.0.2.9 (beta)", b"Version: 0.0.2.9 (beta)"),
    "empty": (b"", b""),
    "nul": (b"\0000.0.2.9", b"\0000.0.2.9"),
    "rubbish": (bytes(range(256)) * 400, b"<html>\xff\xfe</html>" * 1000),
    "huge": (b"9" * 200_000 + b".0.0.0", b"4294967295.4294967295.4294967295.4294967295"),
}
# The file that a scenario gives as installer; the other scenarios that reach it give the good one.
INSTALLERS = {"unsigned": "unsigned.exe", "tampered": "tampered.exe", "unstartable": "unstartable.exe"}

requests_lock = threading.Lock()


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_GET(self):
        with requests_lock, open(os.path.join(FOLDER, "requests"), "a", encoding="ascii") as log:
            log.write(f"{self.scheme} {self.path} {self.headers.get('User-Agent', '')}\n")
        scenario, _, rest = self.path.lstrip("/").partition("/")
        if scenario == "missing":
            self.answer(404, b"0.0.2.9")
        elif scenario == "to-http":
            self.redirect(f"http://localhost:{PORTS['http']}/good/{rest}")
        elif scenario == "to-https":
            self.redirect(f"https://localhost:{PORTS['https']}/good/{rest}")
        else:
            self.answer(200, self.body(scenario, rest), scenario)

    def body(self, scenario, rest):
        beta = "beta/" in rest
        if rest.startswith("versioninfo/"):
            return VERSIONS.get(scenario, VERSIONS["good"])[1 if beta else 0]
        if scenario == "empty":
            return b""
        with open(os.path.join(FOLDER, INSTALLERS.get(scenario, "signed.exe")), "rb") as file:
            return file.read()

    def redirect(self, address):
        self.send_response(302)
        self.send_header("Location", address)
        self.send_header("Content-Length", "0")
        self.end_headers()

    def answer(self, status, body, scenario=""):
        if scenario == "mute":  # takes the request and never says a word
            self.stall()
            return
        if scenario == "slow":
            time.sleep(SLOW_SECONDS)
        self.send_response(status)
        self.send_header("Content-Length", str(len(body)))
        self.send_header("Connection", "close")
        self.end_headers()
        self.close_connection = True
        stalls = scenario == "stall" and "/files/" in self.path
        if stalls or scenario == "broken":
            self.wfile.write(body[: len(body) // 2])
            self.wfile.flush()
            if stalls:
                self.stall()
            return
        self.wfile.write(body)

    def stall(self):
        self.close_connection = True
        self.connection.settimeout(STALL_SECONDS)
        try:
            while self.connection.recv(1):
                pass
        except OSError:
            pass

    def log_message(self, *_):
        pass


class Server(http.server.ThreadingHTTPServer):
    daemon_threads = True

    def handle_error(self, request, client_address):
        pass  # a client that hangs up, or does not like the certificate, is what some tests are about


def serve(scheme, certificate=None):
    handler = type("Handler", (Handler,), {"scheme": scheme})
    server = Server(("localhost", 0), handler, bind_and_activate=False)
    server.address_family = socket.AF_INET
    server.server_bind()
    server.server_activate()
    if certificate:
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(os.path.join(FOLDER, certificate + ".pem"), os.path.join(FOLDER, certificate + ".key"))
        # Handshakes on the connection's own thread: one that hangs does not hold up the others.
        server.socket = context.wrap_socket(server.socket, server_side=True, do_handshake_on_connect=False)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server.server_address[1]


PORTS = {"https": serve("https", "server"), "stranger": serve("stranger", "stranger"), "http": serve("http")}
with open(os.path.join(FOLDER, "ports.new"), "w", encoding="ascii") as ports_file:
    ports_file.write(f"{PORTS['https']} {PORTS['stranger']} {PORTS['http']}\n")
os.rename(os.path.join(FOLDER, "ports.new"), os.path.join(FOLDER, "ports"))
sys.stdin.read()
