"""The texts that the user sees, from the sources of the catalogues."""

from pathlib import Path
from xml.etree import ElementTree

TRANSLATIONS = Path(__file__).resolve().parents[2] / "data" / "translations"


def catalogue(name):
    """Text by id, e.g. of "bramd_eng_en" or "bramd-de"."""
    root = ElementTree.parse(TRANSLATIONS / f"{name}.ts").getroot()
    return {message.get("id"): message.findtext("translation") for message in root.iter("message")}


ENGLISH = catalogue("bramd_eng_en")
