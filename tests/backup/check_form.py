"""check_form.py FOLDER: that each file of it has the one form that a document is written in, by a
reader that shares nothing with the one under test. Ends with 1 and says what is wrong."""
import base64
import json
import pathlib
import re
import sys

BINARY = {"richTextData", "attachmentData"}
UUID = re.compile(r"[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}")


class Number(str):
    """As it is written."""


def members(pairs):
    keys = [key for key, _ in pairs]
    assert keys == sorted(set(keys), key=str.encode), f"keys out of order: {keys}"
    for key, value in pairs:
        assert value is not None, f"{key} is null"
        if key in BINARY:
            decoded = base64.b64decode(value, validate=True)
            assert base64.b64encode(decoded).decode() == value, f"{key}: {value}"
        if key in ("id", "boardID"):
            assert UUID.fullmatch(value), f"{key}: {value}"
    return dict(pairs)


def fraction(text):
    assert len(text) <= len(repr(float(text))), f"{text} could be shorter"
    return Number(text)


def written(value):
    if isinstance(value, dict):
        return "{" + ",".join(written(k) + ":" + written(v) for k, v in value.items()) + "}"
    if isinstance(value, list):
        return "[" + ",".join(map(written, value)) + "]"
    return value if isinstance(value, Number) else json.dumps(value, ensure_ascii=False)


files = sorted(pathlib.Path(sys.argv[1]).iterdir())
assert files
for file in files:
    text = file.read_bytes().decode()
    try:
        read = json.loads(text, object_pairs_hook=members, parse_int=Number, parse_float=fraction)
        assert written(read) == text, "not compact, or escaped where it need not be"
    except (AssertionError, ValueError) as error:
        sys.exit(f"{file.name}: {error}")
