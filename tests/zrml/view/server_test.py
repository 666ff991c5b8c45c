"""zrml view as other programs on the machine see it: server_test.py MAKE_SAMPLE ZRML [EMULATOR]"""

import http.client
import json
import os
import pathlib
import re
import resource
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time
import unittest

MAKE_SAMPLE, ZRML, *EMULATOR = sys.argv[1:]
del sys.argv[1:]
IS_WINDOWS = ZRML.endswith(".exe")
COUNTED_CALLS = os.environ.get("ZRML_COUNTED_CALLS")


def start(*arguments, environment=None):
    """The process, and its port and token."""
    process = subprocess.Popen([*EMULATOR, ZRML, "view", *arguments, "--no-open"], stdout=subprocess.PIPE, text=True,
                               env={**os.environ, **(environment or {})})
    line = process.stdout.readline().strip()
    address = re.fullmatch(r"http://127\.0\.0\.1:(\d+)/#token=([0-9a-f]{32})", line)
    assert address, line
    return process, int(address[1]), address[2]


def end(process):
    process.kill()
    process.wait()
    process.stdout.close()


class Server(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.work = tempfile.TemporaryDirectory()
        cls.run_folder = pathlib.Path(cls.work.name) / "run.raw"
        subprocess.run([*EMULATOR, MAKE_SAMPLE, cls.run_folder], check=True)
        cls.process, cls.port, cls.token = start(cls.run_folder)

    @classmethod
    def tearDownClass(cls):
        end(cls.process)
        cls.work.cleanup()

    def ask(self, target, method="GET", token=True, host=None, tab="tab"):
        headers = {"X-Zrml-Tab": tab, "X-Zrml-Lane": "lane"}
        if token:
            headers["X-Zrml-Token"] = self.token if token is True else token
        if host is not None:
            headers["Host"] = host
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        connection.request(method, target, headers=headers)
        response = connection.getresponse()
        body = response.read()
        connection.close()
        return response, body

    def status(self, *arguments, **more):
        return self.ask(*arguments, **more)[0].status

    def facts(self, question):
        response, body = self.ask("/data/0/" + question)
        self.assertEqual(response.status, 200)
        (length,) = struct.unpack_from("<Q", body)
        return json.loads(body[8 : 8 + length]), body[8 + length :]

    def test_page_holds_no_data_and_needs_no_token(self):
        response, body = self.ask("/", token=None)
        self.assertEqual(response.status, 200)
        self.assertNotIn(b"run.raw", body)
        self.assertNotIn(self.token.encode(), body)

    def test_every_response_has_the_safe_headers(self):
        for target, token in (("/", None), ("/data/0/run", True), ("/data/0/run", None), ("/none", True)):
            headers = self.ask(target, token=token)[0].headers
            self.assertIn("default-src 'none'; script-src 'self'", headers["Content-Security-Policy"])
            self.assertIn("frame-ancestors 'none'", headers["Content-Security-Policy"])
            self.assertEqual(headers["X-Content-Type-Options"], "nosniff")
            self.assertEqual(headers["Cache-Control"], "no-store")
            self.assertEqual(headers["Referrer-Policy"], "no-referrer")
            self.assertEqual(headers["Cross-Origin-Resource-Policy"], "same-origin")
            self.assertIsNone(headers["Access-Control-Allow-Origin"])

    def test_data_need_the_token(self):
        self.assertEqual(self.status("/data/0/run"), 200)
        for token in (None, "0" * 32, self.token[:-1], self.token + "0"):
            for target in ("/data/0/run", "/runs", "/progress"):
                self.assertEqual(self.status(target, token=token), 403)
        self.assertEqual(self.status(f"/data/0/run?token={self.token}", token=None), 403)

    def test_foreign_hosts_are_refused(self):
        self.assertEqual(self.status("/", host=f"localhost:{self.port}"), 200)
        for host in (f"127.0.0.1.evil.com:{self.port}", "evil.com", f"evil.com:{self.port}", f"localhost:{self.port}0",
                     "localhost", "127.0.0.1", f"[::1]:{self.port}", f"0.0.0.0:{self.port}", ""):
            self.assertEqual(self.status("/", host=host), 403, host)
            self.assertEqual(self.status("/data/0/run", host=host), 403, host)

    def test_only_get_is_answered(self):
        for method in ("POST", "PUT", "DELETE", "OPTIONS", "HEAD", "TRACE"):
            self.assertEqual(self.status("/", method=method), 405, method)

    def test_a_body_changes_nothing(self):
        head = f"HTTP/1.1\r\nHost: 127.0.0.1:{self.port}\r\nContent-Length: 45\r\n\r\n"
        hidden = f"GET /page.js HTTP/1.1\r\nHost: 127.0.0.1:{self.port}\r\n\r\n"
        for method, status in (("POST", b"405"), ("GET", b"200")):
            with socket.create_connection(("127.0.0.1", self.port), timeout=60) as other:
                other.sendall(f"{method} / {head}{hidden}".encode())
                answer = b""
                while part := other.recv(65536):
                    answer += part
            self.assertEqual(answer.count(b"HTTP/1.1 "), 1)
            self.assertTrue(answer.startswith(b"HTTP/1.1 " + status), answer)

    def test_requests_one_after_another_are_answered_in_order(self):
        names = ["page.css", "page.js"] * 10
        wanted = [f"GET /{name} HTTP/1.1\r\nHost: 127.0.0.1:{self.port}\r\n" for name in names]
        with socket.create_connection(("127.0.0.1", self.port), timeout=60) as other:
            other.sendall(("\r\n".join(wanted) + "Connection: close\r\n\r\n").encode())
            answer = b""
            while part := other.recv(65536):
                answer += part
        types = re.findall(rb"\r\nContent-Type: text/(\w+)", answer)
        self.assertEqual(types, [b"css", b"javascript"] * 10)

    def test_a_mean_is_that_of_the_command_line(self):
        for function, front, back in ((0, (2, 2.5), (4, 4.2)), (1, (3, 4), (5, 7)), (0, (1, 1.3), None)):
            question = f"average?from={front[0]}&function={function}&sample=0&to={front[1]}"
            command = [*EMULATOR, ZRML, "spectrum", self.run_folder, "--function", str(function + 1), "--rt", f"{front[0]}-{front[1]}", "--mean", "--json"]
            if back:
                question += f"&backFrom={back[0]}&backTo={back[1]}"
                command += ["--minus", f"{back[0]}-{back[1]}"]
            facts, arrays = self.facts(question)
            printed = json.loads(subprocess.run(command, check=True, capture_output=True).stdout)
            count = printed["points"]
            self.assertGreater(count, 0)
            values = struct.unpack_from(f"<{2 * count}d", arrays)
            self.assertEqual(list(values[:count]), printed["masses"])
            self.assertEqual(list(values[count:]), printed["intensities"])
            self.assertEqual(back is not None, min(values[count:]) < 0)

    def test_no_path_comes_from_the_client(self):
        for target in ("/../../etc/passwd", "/data/0/../../etc/passwd", "/data/0/run?path=/etc/passwd", "/%2e%2e/", "/data/0/%72un"):
            self.assertEqual(self.status(target), 404, target)
        for target in ("/data/0/file?name=passwd", "/data/1/run", "/data/0/sample?sample=1"):
            self.assertEqual(self.status(target), 400, target)

    def test_the_values_are_those_of_the_command_line(self):
        facts, arrays = self.facts("spectrum?function=1&sample=0&scan=119")
        command = [*EMULATOR, ZRML, "spectrum", self.run_folder, "--function", "2", "--scan", "120", "--json"]
        printed = json.loads(subprocess.run(command, check=True, capture_output=True).stdout)
        count = printed["points"]
        self.assertGreater(count, 0)
        self.assertEqual([array[0] for array in facts["arrays"]], ["x", "y"])
        values = struct.unpack_from(f"<{2 * count}d", arrays)
        self.assertEqual(list(values[:count]), printed["masses"])
        self.assertEqual(list(values[count:]), printed["intensities"])
        self.assertEqual(facts["precursorMz"], printed["precursorMz"])
        self.assertEqual(facts["precursor"]["scan"] + 1, printed["precursorScan"])

    def test_a_request_in_pieces_is_one(self):
        request = f"GET /data/0/map?columns=2000&function=0&rows=2000&sample=0 HTTP/1.1\r\nHost: 127.0.0.1:{self.port}\r\nX-Zrml-Token: {self.token}\r\n\r\n"
        with socket.create_connection(("127.0.0.1", self.port), timeout=60) as other:
            other.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            for place in range(0, len(request), 3):
                other.sendall(request[place : place + 3].encode())
            self.assertIn(b" 200 OK", other.recv(100))

    def test_the_map_of_a_client_that_has_gone_is_given_up(self):
        for lane in range(20):
            with socket.create_connection(("127.0.0.1", self.port), timeout=60) as other:
                other.sendall(f"GET /data/0/map?columns=4000&function=0&rows=4000&sample=0 HTTP/1.1\r\nHost: 127.0.0.1:{self.port}\r\n"
                              f"X-Zrml-Tab: gone\r\nX-Zrml-Lane: {lane}\r\nX-Zrml-Token: {self.token}\r\n\r\n".encode())
        response, body = self.ask("/data/0/run")
        self.assertEqual(response.status, 200)
        for _ in range(600):
            response, body = self.ask("/progress", tab="gone")
            if json.loads(body) == {}:
                return
            time.sleep(0.1)
        self.fail(body)

    def test_other_addresses_of_the_machine_do_not_listen(self):
        with socket.socket() as other:
            with self.assertRaises(OSError):
                other.connect(("127.0.0.2", self.port))

    def test_nonsense_ends_its_connection_only(self):
        for text in (b"\r\n\r\n", b"GET\r\n\r\n", b"\x16\x03\x01" + 100 * b"\0", b"GET / HTTP/1.1\r\n" + 20000 * b"a: b\r\n"):
            with socket.create_connection(("127.0.0.1", self.port), timeout=60) as other:
                try:
                    other.sendall(text)
                    other.shutdown(socket.SHUT_WR)
                    self.assertNotIn(b"200 OK", other.recv(100))
                except OSError:
                    pass  # it has ended already
        self.assertEqual(self.status("/"), 200)

    def test_two_host_headers_are_refused(self):
        with socket.create_connection(("127.0.0.1", self.port), timeout=60) as other:
            other.sendall(f"GET / HTTP/1.1\r\nHost: 127.0.0.1:{self.port}\r\nHost: evil.com\r\n\r\n".encode())
            self.assertNotIn(b" 200 ", other.recv(100))


@unittest.skipIf(IS_WINDOWS, "Wine passes no Ctrl-C on")
class Ending(unittest.TestCase):
    def setUp(self):
        self.work = tempfile.TemporaryDirectory()
        self.run_folder = pathlib.Path(self.work.name) / "run.raw"
        subprocess.run([MAKE_SAMPLE, self.run_folder], check=True)

    def tearDown(self):
        self.work.cleanup()

    def test_ends_with_status_0_by_an_interruption(self):
        process, _, _ = start(self.run_folder)
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(60), 0)
        process.stdout.close()

    def test_ends_while_it_is_busy(self):
        process, port, token = start(self.run_folder)
        connections = []
        for function in (0, 1, 0, 1):
            connection = socket.create_connection(("127.0.0.1", port))
            target = f"/data/0/map?columns=4000&rows=4000&function={function}&sample=0"
            connection.sendall(f"GET {target} HTTP/1.1\r\nHost: 127.0.0.1:{port}\r\nX-Zrml-Token: {token}\r\n"
                               f"X-Zrml-Lane: {len(connections)}\r\n\r\n".encode())
            connections.append(connection)
        process.send_signal(signal.SIGTERM)
        self.assertEqual(process.wait(60), 0)
        for connection in connections:
            connection.close()
        process.stdout.close()

    def test_ends_at_once_while_it_reads_a_report_that_takes_minutes(self):
        report = pathlib.Path(self.work.name) / "long.rpt"
        subprocess.run([MAKE_SAMPLE, report], check=True)
        os.truncate(report, 1 << 40)  # zeros, which take no room on the disk
        process, port, token = start(report)
        with socket.create_connection(("127.0.0.1", port)) as connection:
            connection.sendall(f"GET /data/0/run HTTP/1.1\r\nHost: 127.0.0.1:{port}\r\nX-Zrml-Token: {token}\r\n\r\n".encode())
            time.sleep(0.2)
            process.send_signal(signal.SIGINT)
            self.assertEqual(process.wait(60), 0)
        process.stdout.close()

    @unittest.skipUnless(COUNTED_CALLS, "its calls are counted in one build only")
    def test_more_connections_than_it_may_have_files_leave_it_idle(self):
        calls = pathlib.Path(self.work.name) / "calls"
        began = time.monotonic()
        process, port, _ = start(self.run_folder, environment={"LD_PRELOAD": COUNTED_CALLS, "ZRML_CALLS": str(calls)})
        open_files = len(os.listdir(f"/proc/{process.pid}/fd"))
        resource.prlimit(process.pid, resource.RLIMIT_NOFILE, (open_files + 10, open_files + 10))
        connections = [socket.create_connection(("127.0.0.1", port)) for _ in range(20)]
        time.sleep(1)
        for connection in connections:
            connection.close()
        client = http.client.HTTPConnection("127.0.0.1", port, timeout=60)
        client.request("GET", "/")
        self.assertEqual(client.getresponse().status, 200)
        client.close()
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(60), 0)
        process.stdout.close()
        looks = (time.monotonic() - began) / 0.1
        accepts = int(calls.read_text().split()[1])
        self.assertGreater(accepts, 20)
        self.assertLess(accepts, 100 + 2 * looks)

    def test_a_port_that_is_taken_is_one_line(self):
        process, port, _ = start(self.run_folder)
        second = subprocess.run([ZRML, "view", self.run_folder, "--port", str(port), "--no-open"], capture_output=True, text=True)
        self.assertEqual(second.returncode, 5)
        self.assertEqual(second.stderr, f"zrml: cannot listen on port {port} ({os.strerror(98)})\n")
        self.assertEqual(second.stdout, "")
        end(process)


if __name__ == "__main__":
    unittest.main()
