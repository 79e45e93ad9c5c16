"""Files of the user's own, to be opened and shared."""

import io
from dataclasses import dataclass
from pathlib import Path

from PIL import Image

from phone.namespace import USER


@dataclass
class Sample:
    """A file in the user's home directory."""

    path: Path
    mime_type: str


def put_into_home():
    """Writes a letter and two photos, with names that an address has to encode."""
    return [_put("Documents/letter to Åse.pdf", "application/pdf", _drawn("PDF", "white")),
            _put("Pictures/sea.jpg", "image/jpeg", _drawn("JPEG", "teal")),
            _put("Pictures/100% sun #1.jpg", "image/jpeg", _drawn("JPEG", "gold"))]


def _put(name, mime_type, content):
    path = Path("/home", USER, name)
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(content)
    return Sample(path, mime_type)


def _drawn(kind, colour):
    file = io.BytesIO()
    Image.new("RGB", (420, 594), colour).save(file, kind)
    return file.getvalue()
