#!/usr/bin/python3
"""Minimal client of the AV manager wire protocol: wire_client.py ENDPOINT ID [JSON]."""
import json, struct, sys
import zmq

endpoint, command = sys.argv[1], int(sys.argv[2])
request = sys.argv[3].encode() if len(sys.argv) > 3 else b""
socket = zmq.Context().socket(zmq.REQ)
socket.setsockopt(zmq.LINGER, 0)
socket.setsockopt(zmq.RCVTIMEO, 5000)
socket.connect(endpoint)
socket.send_multipart([struct.pack("<I", command), request])
print(json.dumps(json.loads(socket.recv()), sort_keys=True, separators=(",", ":")))
