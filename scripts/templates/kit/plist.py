"""Property lists in XML, keys in the order in which they were written, with comments for authors."""

from xml.sax.saxutils import escape

HEADER = (
    '<?xml version="1.0" encoding="UTF-8"?>\n'
    '<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">\n'
    '<plist version="1.0">\n'
)


class Note(str):
    """A dictionary key or array entry of this class becomes a comment instead of data."""

    __hash__ = str.__hash__


def write(path, value):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(HEADER + "\n".join(_lines(value, 0)) + "\n</plist>\n", encoding="utf-8")


def _lines(value, depth):
    pad = "\t" * depth
    if isinstance(value, Note):
        if "--" in value:
            raise ValueError(f"XML allows no double hyphen in a comment: {value}")
        return [f"{pad}<!-- {line} -->" for line in value.split("\n")]
    if isinstance(value, dict):
        return [f"{pad}<dict>", *_members(value, depth + 1), f"{pad}</dict>"]
    if isinstance(value, (list, tuple)):
        inner = [line for entry in value for line in _lines(entry, depth + 1)]
        return [f"{pad}<array>", *inner, f"{pad}</array>"]
    return [pad + _scalar(value)]


def _members(value, depth):
    pad = "\t" * depth
    out = []
    for key, entry in value.items():
        if isinstance(key, Note):
            out += _lines(key, depth)
            continue
        out.append(f"{pad}<key>{escape(key)}</key>")
        out += _lines(entry, depth)
    return out


def _scalar(value):
    if isinstance(value, bool):
        return "<true/>" if value else "<false/>"
    if isinstance(value, int):
        return f"<integer>{value}</integer>"
    if isinstance(value, float):
        return f"<real>{value:g}</real>"
    return f"<string>{escape(str(value))}</string>"
