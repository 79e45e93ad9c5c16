"""Announcements that no well-behaved runtime makes, each by the name of what is wrong with it."""

from dataclasses import dataclass, field

import parcels

MEBIBYTE = 1 << 20
LONG = "a" * (MEBIBYTE // 2)  # a mebibyte of UTF-16

UNUSABLE = "Dropping launcher with unusable name:"
TOO_LONG = "Dropping launcher whose name is too long for a file:"
OF_ANOTHER = "Dropping launcher whose files are those of another app:"

# Apps that are there before, and are not to be touched. The name of each has a double: other names
# become the same when "." and "_" are escaped, or when the package is put in front of the class.
NEIGHBOURS = (("near_.by", "near.Main"), ("near.by", "near.Main-Second"))

# Words that would add or change something, were they ever taken for a line of their own.
INJECTED = "Exec=/bin/sh"


@dataclass
class Record:
    """One announcement. Fields that are None are sent as the null string."""

    about: str
    refusal: str = ""  # how the one line in the log begins, if nothing is to be written
    package: str = "own.package"
    activity: str = "own.Main"
    label: str = "Label"
    version: str = "1.0"
    icon: bytes = b"\x89PNG"
    extra: dict = field(default_factory=dict)  # of handlers only

    def data(self):
        make = parcels.handler if self.extra else parcels.launcher
        return make(self.package, self.activity, self.label, version=self.version, icon=self.icon,
                    **self.extra)

    def code(self):
        return parcels.ADD_HANDLER if self.extra else parcels.ADD_LAUNCHER

    def mime_types(self):
        plain = self.extra.get("mime_types")
        return ((plain.split(";") if plain else [])
                + [f"x-scheme-handler/{item}" for item in self._items("schemes")]
                + [f"x-url-handler/{item}" for item in self._items("url_handlers")])

    def share_mime_types(self):
        return self._items("share_mime_types")

    def is_handler(self):
        return bool(self.mime_types() or self.share_mime_types())

    def _items(self, name):
        return [item for item in (self.extra.get(name) or "").split(";") if item]


def _labels():
    for about, label in (
            ("line feed", f"A\n{INJECTED}"),
            ("carriage return", f"A\r{INJECTED}"),
            ("both line ends", "A\r\nNoDisplay=true\r\n"),
            ("vertical tab and form feed", f"A\v{INJECTED}\fB"),
            ("next line", f"A\x85{INJECTED}"),
            ("line separator", f"A\u2028{INJECTED}"),
            ("paragraph separator", f"A\u2029{INJECTED}"),
            ("NUL inside", "A\0B"),
            ("NUL alone", "A\0\0\0"),
            ("tab", "A\tB"),
            ("escape sequence", "A\x1b[2J\x1b]0;title\x07"),
            ("delete", "A\x7f"),
            ("group after a line feed", f"A\n[Desktop Action evil]\n{INJECTED}"),
            ("group header", "[Desktop Entry]"),
            ("comment", f"# {INJECTED}"),
            ("equals signs", "=A=B="),
            ("key of another language", "Name[de]=B"),
            ("field codes", "%f %U %c %i %k %%"),
            ("place markers", "%1%2%3"),
            ("commas", "A, B,,\\,C"),
            ("value of another type", "@ByteArray(A)"),
            ("quotes", "\"A\" 'B'"),
            ("quote that does not end", "A\""),
            ("shell", "$(reboot) `reboot` ${HOME} ; reboot"),
            ("semicolons", ";;A;"),
            ("backslash and letter", r"A\nExec=x\s\x\;"),
            ("backslash last", "A\\"),
            ("backslashes", "\\\\\\"),
            ("right-to-left marks", "A\u202e\u200f\u2067gnp.exe"),
            ("byte order mark", "\ufeffA"),
            ("high half of a pair", "A\ud83d"),
            ("low half of a pair", "A\ude00B"),
            ("halves in the wrong order", "A\ude00\ud83d"),
            ("no characters", "A\uffff\ufdd0\ufffe"),
            ("pictures beyond the first plane", "A \U0001f468\u200d\U0001f469"),
            ("blanks last", "A   "),
            ("a mebibyte", LONG),
            ("empty", ""),
            ("null", None),
            ("path", "../../etc/passwd"),
            ("markup", "<b>A&amp;</b>"),
            ("JSON", '"}, "evil": {"a": "\\u0000"}')):
        yield Record(f"label: {about}", label=label)
        yield Record(f"label of a handler: {about}", label=label,
                     extra={"caption": label, "mime_types": "text/plain",
                            "share_mime_types": "text/plain"})


def _names():
    for about, name, refusal in (
            ("empty", "", UNUSABLE),
            ("null", None, UNUSABLE),
            ("way up", "../../../etc/cron.d/evil", UNUSABLE),
            ("path", "/etc/passwd", UNUSABLE),
            ("slash", "/", UNUSABLE),
            ("slash inside", "a/b", UNUSABLE),
            ("line feed", f"a\n{INJECTED}", UNUSABLE),
            ("carriage return last", "a\r", UNUSABLE),
            ("line separator", "a\u2028b", UNUSABLE),
            ("NUL", "a\0b", UNUSABLE),
            ("escape", "\x1b[2J", UNUSABLE),
            ("argument", "a.B -d tel:112", UNUSABLE),
            ("option", "-d", UNUSABLE),
            ("quote", "a\"b", UNUSABLE),
            ("apostrophe", "a'b", UNUSABLE),
            ("backslash", "a\\nb", UNUSABLE),
            ("field code", "a%fb", UNUSABLE),
            ("place marker", "%1", UNUSABLE),
            ("comment", "#a", UNUSABLE),
            ("semicolon", "a;b", UNUSABLE),
            ("equals sign", "a=b", UNUSABLE),
            ("shell", "$(reboot)", UNUSABLE),
            ("wildcard", "*", UNUSABLE),
            ("right-to-left override", "a\u202eb", UNUSABLE),
            ("half of a pair", "a\ud83d", UNUSABLE),
            ("no-break space", "a\xa0b", UNUSABLE),
            ("longer than a file name", "a" * 300, TOO_LONG),
            ("longer once escaped", "_" * 120, TOO_LONG),
            ("longer once encoded", "\u65e5" * 100, TOO_LONG),
            ("a mebibyte", LONG, TOO_LONG),
            ("dots", "..", ""),
            ("inner class", "a.Main$Inner", ""),
            ("letters of the world", "a.\u00dcbung.\u65e5", ""),
            ("suffix of entries", "a.desktop", ""),
            ("suffix of icons", "a.png", ""),
            ("name of a file of ours", "sharing.json", ""),
            ("name of our entries", "bramd_launcher_", "")):
        yield Record(f"package: {about}", refusal, package=name)
        yield Record(f"class: {about}", refusal, activity=name)
        yield Record(f"package of a handler: {about}", refusal, package=name,
                     extra={"mime_types": "a/b", "share_mime_types": "a/b"})
    for about, package, activity in (
            ("dot before underscore", "near._by", "near.Main"),
            ("dash", "near.by-near.Main", "Second")):
        yield Record(f"double of a neighbour: {about}", OF_ANOTHER, package, activity, icon=b"evil")
        yield Record(f"double of a neighbour that shares: {about}", OF_ANOTHER, package, activity,
                     icon=b"evil", extra={"share_mime_types": "a/b"})


def _versions():
    for about, version in (
            ("control characters", "1\n2\r3\0\x1b[2J"),
            ("JSON", '1", "packageName": "evil"}'),
            ("half of a pair", "1\ud83d"),
            ("a mebibyte", LONG),
            ("empty", ""),
            ("null", None)):
        yield Record(f"version: {about}", version=version)


def _icons():
    for about, icon in (
            ("null", None),
            ("empty", b""),
            ("text", b"no image\n"),
            ("desktop entry", f"[Desktop Entry]\n{INJECTED}\n".encode()),
            ("largest that a message can hold", bytes(range(256)) * (16 * 1024 - 4))):
        yield Record(f"icon: {about}", icon=icon)


def _types():
    for about, types in (
            ("no MIME types", "no mime type;*;/;a/b/c;-;%U;A/B"),
            ("parameters", "text/html;charset=utf-8"),
            ("line feed", f"a/b\n{INJECTED};c/d"),
            ("carriage return", f"a/b\r{INJECTED};c/d"),
            ("NUL", "a/b\0c;d"),
            ("key", f"{INJECTED};NoDisplay=false"),
            ("group header", "[Desktop Entry];[MIME Cache]"),
            ("backslashes", "a\\;b\\\\;c\\n;\\"),
            ("half of a pair", "a/\ud83d;b/\ude00"),
            ("JSON", 'a/b"], "multi": true, "evil": ["'),
            ("JSON of objects", '{};{"a":[]};null;true'),
            ("escape sequence", "a/\x1b[2J"),
            ("right-to-left override", "a/\u202eb"),
            ("half a mebibyte", "a" * (MEBIBYTE // 4)),
            ("thousands", ";".join(f"a/b{number}" for number in range(20000))),
            ("only semicolons", ";" * 10000)):
        yield Record(f"MIME types: {about}", extra={"mime_types": types})
        yield Record(f"shared types: {about}", extra={"share_mime_types": types})
        yield Record(f"schemes: {about}", extra={"schemes": types})
        yield Record(f"URL handlers: {about}", extra={"url_handlers": types})
    yield Record("everything empty", extra={
        "caption": "", "mime_types": "", "share_mime_types": "", "schemes": "",
        "url_handlers": ""}, label="", version="", icon=b"")
    yield Record("everything null", extra={
        "caption": None, "mime_types": None, "share_mime_types": None, "schemes": None,
        "url_handlers": None}, label=None, version=None, icon=None)
    yield Record("several items at once", extra={
        "caption": "Several", "share_mime_types": "a/b", "multi": True, "extra": True})


RECORDS = [*_labels(), *_names(), *_versions(), *_icons(), *_types()]
