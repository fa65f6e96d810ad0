"""Composes a message with a text and a picture, submits it, and prints the result."""
import sys

import mmsbrix

if len(sys.argv) != 5:
    sys.exit("usage: RECIPIENT PICTURE URL PROXY-HOST:PORT")
recipient, picture, url, proxy = sys.argv[1:]
message = mmsbrix.Message(to=[recipient], subject="Look!")
message.attach_text("Seen on the way home.")
message.attach(picture)
try:
    print("sent:", message.send(url, proxy=proxy))
except mmsbrix.RelayError as error:
    sys.exit(f"not sent: {error}")
