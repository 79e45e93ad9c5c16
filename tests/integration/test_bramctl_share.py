"""bramctl shares texts and files, and says where they can go."""

from bramctl import REFUSED, bramctl
from hostfiles import home_file
from launches import HOME_VOLUME, started_intents

PAPERTRAIL = "org.example.papertrail"
SHARE_ONE = f"{PAPERTRAIL}/{PAPERTRAIL}.ShareOneActivity"
SHARE_MANY = f"{PAPERTRAIL}/{PAPERTRAIL}.ShareManyActivity"


def test_without_targets_a_runtime_that_runs_is_not_to_be_started(phone):
    phone.start_daemon()
    phone.unit.show("active", "running")
    assert "bramctl start" not in bramctl("targets").done("No app takes what is shared.").out


def test_targets_are_listed(papertrail):
    del papertrail
    bramctl("targets").done(f"{SHARE_ONE}   File in Paper Trail    one      application/pdf "
                            "text/plain\n")
    assert bramctl("targets", "--json").json()[0] == {
        "target": SHARE_MANY, "package": PAPERTRAIL,
        "class": f"{PAPERTRAIL}.ShareManyActivity", "label": "Paper Trail",
        "caption": "Scan into Paper Trail", "multi": True, "mimetypes": ["image/*"]}


def test_a_text_is_shared_with_a_title(papertrail):
    bramctl("share", "Buy", "milk", "--to", SHARE_ONE).done("has taken the text")
    assert started_intents(papertrail)[0]["extras"] == {
        "android.intent.extra.SUBJECT": "Buy milk", "android.intent.extra.TEXT": "Buy milk"}
    bramctl("share", "Buy milk", "--title", "List", "--to", SHARE_ONE).done()
    assert started_intents(papertrail)[1]["extras"]["android.intent.extra.SUBJECT"] == "List"


def test_files_are_shared(papertrail):
    first, second = home_file("a.png", b"\x89PNG\r\n\x1a\n"), home_file("b.jpg", b"\xff\xd8\xff")
    bramctl("share", first, "--to", SHARE_MANY).done("has taken", str(first))
    bramctl("share", first, f"file://{second}", "--to", SHARE_MANY).done()
    volume = f"file://{HOME_VOLUME}/Downloads"
    one, two = started_intents(papertrail)
    assert (one["action"], one["type"]) == ("android.intent.action.SEND", "image/png")
    assert one["extras"] == {"android.intent.extra.STREAM": f"{volume}/a.png"}
    assert (two["action"], two["type"]) == ("android.intent.action.SEND_MULTIPLE", "image/*")
    assert two["extras"]["android.intent.extra.STREAM"] == [f"{volume}/a.png",
                                                            f"{volume}/b.jpg"]
    assert one["componentClass"] == f"{PAPERTRAIL}.ShareManyActivity"


def test_a_text_file_is_shared_as_a_file(papertrail):
    bramctl("share", home_file("notes.txt", b"notes"), "--to", SHARE_ONE).done()
    intent = started_intents(papertrail)[0]
    assert intent["extras"] == {
        "android.intent.extra.STREAM": f"file://{HOME_VOLUME}/Downloads/notes.txt"}


REFUSED_SHARES = [
    (["{png}", "--to", SHARE_ONE], "does not take image/png but: application/pdf, text/plain"),
    (["{pdf}", "{pdf}", "--to", SHARE_ONE], "one file at a time"),
    (["Hello", "--to", SHARE_MANY], "does not take text/plain"),
    (["{pdf}", "Hello", "--to", SHARE_ONE], "There is no file “Hello”. Share files or a text"),
    (["/no/a.pdf", "/no/b.pdf", "--to", SHARE_ONE], "There is no file “/no/a.pdf”"),
    (["b.pdf", "--to", SHARE_ONE], "There is no file “b.pdf”"),
    (["/etc/passwd", "--to", SHARE_ONE], "The runtime does not see “/etc/passwd”"),
    (["Hello", "--to", "org.example.nothing/x"], "bramctl targets"),
]


def test_what_an_app_does_not_take_is_not_shared(papertrail):
    files = {"png": home_file("a.png", b"\x89PNG\r\n\x1a\n"), "pdf": home_file("a.pdf", b"%PDF-")}
    for words, says in REFUSED_SHARES:
        bramctl("share", *(word.format(**files) for word in words)).failed(REFUSED, says)
    assert not started_intents(papertrail)
