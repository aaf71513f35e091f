#!/usr/bin/env python3
"""Management client that talks like the program and writes what it saw as a replay script.

Usage: management-recorder.py PORT USER PASSWORD MODE OUTPUT
MODE: stop (SIGTERM after a few byte counts), reconnect (SIGUSR1 once, then SIGTERM), none.
"""
import socket
import sys
import time

port, user, password, mode, output = int(sys.argv[1]), sys.argv[2], sys.argv[3], sys.argv[4], sys.argv[5]

for _ in range(100):
    try:
        sock = socket.create_connection(("127.0.0.1", port))
        break
    except OSError:
        time.sleep(0.1)
else:
    sys.exit("management port never opened")

steps = []
last = time.monotonic()


def note_gap():
    global last
    now = time.monotonic()
    gap = int((now - last) * 1000)
    if gap >= 20:
        steps.append("pause %d" % min(gap, 300))
    last = now


def send(text):
    note_gap()
    steps.append("C: " + text)
    sock.sendall((text + "\n").encode())


send("state on all")
send("log on")
send("bytecount 1")

buffer = b""
counts = 0
connected = False
reconnected = False
stop_sent = False
deadline = time.monotonic() + 30
sock.settimeout(1.0)
while time.monotonic() < deadline:
    try:
        data = sock.recv(4096)
    except socket.timeout:
        continue
    if not data:
        note_gap()
        steps.append("close")
        break
    buffer += data
    while b"\n" in buffer:
        raw, buffer = buffer.split(b"\n", 1)
        line = raw.decode("utf-8", "replace").rstrip("\r")
        if not raw.endswith(b"\r"):
            steps.append("# (line without carriage return)")
        note_gap()
        steps.append("S: " + line)
        if "PASSWORD:Need 'Auth' username/password" in line:
            send('username "Auth" ' + user)
        elif "'Auth' username entered, but not yet verified" in line:
            send('password "Auth" ' + password)
        elif line.startswith(">STATE:") and ",CONNECTED,SUCCESS," in line:
            connected = True
            counts = 0
        elif line.startswith(">BYTECOUNT:") and connected:
            counts += 1
            if mode == "reconnect" and counts == 2 and not reconnected:
                reconnected = True
                connected = False
                send("signal SIGUSR1")
            elif counts == 3 and not stop_sent and mode in ("stop", "reconnect"):
                stop_sent = True
                send("signal SIGTERM")

with open(output, "w") as f:
    f.write("# Recorded from OpenVPN 2.6 (client with --management-query-passwords) by record-management.sh.\n")
    f.write("\n".join(steps) + "\n")
