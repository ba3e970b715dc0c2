#!/usr/bin/env python3
"""mailbox_py.py scan FILE | delete FILE N: Python's mailbox module as a peer."""
import email.header, email.utils, mailbox, sys
from email.parser import BytesHeaderParser

box = mailbox.mbox(sys.argv[2], create=False)
if sys.argv[1] == "delete":
    box.lock()
    box.remove(int(sys.argv[3]) - 1)
    box.flush()
    box.unlock()
    sys.exit()
parser, count, characters = BytesHeaderParser(), 0, 0
for key in box.iterkeys():
    with box.get_file(key) as f:
        lines = []
        while (line := f.readline()) not in (b"", b"\n", b"\r\n"):
            lines.append(line)
    head = parser.parsebytes(b"".join(lines))
    try:
        characters += len(str(email.header.make_header(email.header.decode_header(head["Subject"] or ""))))
    except (LookupError, UnicodeDecodeError):
        pass
    email.utils.parseaddr(head["From"]), email.utils.parsedate_tz(head["Date"]), head["Message-ID"], head["Status"]
    count += 1
print(count, "messages, subject characters", characters)
