"""Whatever the runtime announces: each app has its own files, with what was meant, and no more."""

import json
import os
import re
import subprocess
from pathlib import Path

from gi.repository import Gio, GLib

from daemonsteps import claim_missing_settings_entries, start_beside_runtime
from hostfiles import APPLICATIONS, ICONS, SETTINGS, SHARING, entry_path, icon_path, settings_path
from hostilerecords import MEBIBYTE, NEIGHBOURS, RECORDS, Record
from parcels import COMPLETE, REMOVE_PACKAGE, int32, string16

DIRECTORIES = (APPLICATIONS, ICONS, SETTINGS)
CACHE = APPLICATIONS / "mimeinfo.cache"  # made anew from all entries whenever one goes
INI_READER = Path(os.environ["BRAMD_BUILD_DIR"]) / "tests/integration/inireader"
LONGEST_LINE = 700  # of a refusal: two excerpts
FAILED_TRANSACTION = -(1 << 31) + 2


def one_line(text):
    """What text becomes that is to stay on its line."""
    whole = (text or "").encode("utf-16-le", "surrogatepass").decode("utf-16-le", "replace")
    return "".join(" " if ord(character) < 0x20 or 0x7f <= ord(character) < 0xa0
                   or character in "\u2028\u2029" else character for character in whole)


def json_text(text):
    """What JSON keeps of text: all but the halves of pairs."""
    return (text or "").encode("utf-16-le", "surrogatepass").decode("utf-16-le", "replace")


def all_files():
    return {path for directory in DIRECTORIES for path in directory.rglob("*")}


def files_elsewhere():
    """Every path below the directories in which a name that escapes would most likely end."""
    found = set()
    for top in ("/etc/bramd", "/etc/cron.d", "/home", "/opt", "/usr/share/bramd",
                "/usr/share/corvo-settings"):
        for directory, names, files in os.walk(top):
            if Path(directory) not in DIRECTORIES:
                found.update(os.path.join(directory, name) for name in names + files)
    return found - set(map(str, DIRECTORIES))


def stamp(path):
    status = path.stat()
    return status.st_ino, status.st_mtime_ns, path.read_bytes()


def entry_of(record):
    return entry_path(record.package, record.activity, record.is_handler())


def expected_keys(record, entry):
    keys = {
        "Exec": f"bramd-launcher {'-d %U ' if record.mime_types() else ''}{record.package}.apk "
                f"{record.package}/{record.activity}",
        "Icon": str(icon_path(entry)),
        "Name": one_line(record.label).lstrip(" "),  # readers skip what is blank
        "Type": "Application",
        "Version": "1.0",
        "X-Orca-Application-Type": "no-invoker",
        "X-bramd-apkfile": f"/home/.android/data/app//{record.package}.apk",
        "X-bramd-packageName": record.package}
    if record.is_handler():
        keys["NoDisplay"] = "true"
    if record.mime_types():
        keys["MimeType"] = one_line(";".join(record.mime_types()))
    return keys


def key_file_of(path):
    key_file = GLib.KeyFile()
    key_file.load_from_file(str(path), GLib.KeyFileFlags.NONE)
    return key_file


def check_entry(record, entry):
    """As glib reads it, which is what desktops and the cache of MIME types use."""
    key_file = key_file_of(entry)
    assert key_file.get_groups()[0] == ["Desktop Entry"]
    assert {key: key_file.get_string("Desktop Entry", key)
            for key in key_file.get_keys("Desktop Entry")[0]} == expected_keys(record, entry)

    app = Gio.DesktopAppInfo.new_from_filename(str(entry))
    assert app.get_name() == expected_keys(record, entry)["Name"]
    assert app.get_nodisplay() is record.is_handler()
    assert app.get_executable() == "bramd-launcher"
    words = GLib.shell_parse_argv(app.get_commandline())[1]
    assert words == (["bramd-launcher", *(["-d", "%U"] if record.mime_types() else []),
                      f"{record.package}.apk", f"{record.package}/{record.activity}"])


# QSettings reads entries by the rules of INI files. In these a semicolon begins a comment, commas
# part the items of a list, blanks at the ends of an item and a byte order mark in front do not
# count, and "@" begins a value of another type. Quotation marks hold a value together, and the
# lines that follow if there is no second one. In entries none of this means anything: whoever
# keeps to their rules, as glib does above, takes it for text. A program that does not may lose a
# part of a value, or what follows a quotation mark, and finds neither another key nor anything
# that was not written in it.
_INI_VALUE = re.compile(r'((?:[^";]|"[^"]*")*)("?)')


def check_entry_as_ini(record, found):
    """As Qt reads it: found are the items of each key. Values with quotation marks, and those of
    another type, are left out of the comparison."""
    expected = expected_keys(record, entry_of(record))
    unread = dict(found)
    for key in sorted(expected):  # which is their order in the file
        items = unread.pop(f"Desktop Entry/{key}")
        value, endless = _INI_VALUE.match(expected[key]).groups()
        if endless:
            break
        if '"' not in value and not value.startswith("@"):
            assert items == [item.strip(" ").removeprefix("\ufeff")
                             for item in value.split(",")], key
    assert not unread


def read_as_ini(directory, entries):
    """What Qt finds in each of these contents of entries."""
    paths = [directory / f"{number}.desktop" for number in range(len(entries))]
    for path, content in zip(paths, entries):
        path.write_bytes(content)
    result = subprocess.run([INI_READER, *paths], capture_output=True, check=True)
    found = json.loads(result.stdout)
    return [found[str(path)] for path in paths]


def check_settings(record, entry):
    assert json.loads(settings_path(entry).read_bytes()) == {"entries": [{
        "path": f"applications/{entry.name}", "type": "page", "params": {
            "source": "/usr/share/corvo-settings/pages/apk-configuration/apkConfigurationPage.qml",
            "properties": {"packageName": record.package,
                           "packageVersion": json_text(record.version)}}}]}


def target(record):
    return {"label": json_text(record.label), "caption": json_text(record.extra.get("caption")),
            "icon": str(icon_path(entry_of(record))),
            "mimetypes": [json_text(item) for item in record.share_mime_types()],
            "multi": record.extra.get("multi", False)}


class Host:
    """The phone, and what there is to be on it."""

    def __init__(self, phone):
        self.phone = phone
        self.targets = {}
        self.written = []  # records and what their entries held
        for number, (package, activity) in enumerate(NEIGHBOURS):
            self.announce(Record("neighbour", package=package, activity=activity))
            neighbour = Record("neighbour that shares", package=package, activity=f"near.{number}",
                               extra={"share_mime_types": "a/b"})
            self.announce(neighbour)
            self.targets[package] = {neighbour.activity: target(neighbour)}
        foreign = APPLICATIONS / "org.host.desktop"
        foreign.write_text("[Desktop Entry]\nName=Host\n", "utf-8")
        (ICONS / "host.png").write_bytes(b"host")
        (SETTINGS / "host.json").write_bytes(b"{}")
        self.others = all_files() - {SHARING, CACHE}
        self.stamps = {path: stamp(path) for path in self.others}
        self.elsewhere = files_elsewhere()

    def announce(self, record):
        status = self.phone.runtime.call_launcher(record.code(), record.data())
        assert status == (0, b""), status

    def check_refusal(self, record):
        trouble = [line for line in self.phone.daemon.log.records
                   if line.level in ("warning", "critical") and not line.claimed]
        for line in trouble:
            line.claimed = True
        if record.refusal:
            assert len(trouble) == 1, trouble
            assert trouble[0].text.startswith(record.refusal)
            assert len(trouble[0].text) < LONGEST_LINE
        else:
            assert not trouble

    def check_sharing(self, *records):
        targets = dict(self.targets)
        for record in records:
            targets[record.package] = {record.activity: target(record)}
        text = SHARING.read_text("utf-8")
        assert json.loads(text, object_pairs_hook=without_doubles) == targets

    def check_others(self, *written):
        assert not all_files() ^ {*self.others, SHARING, CACHE, *written}
        for path, before in self.stamps.items():
            assert stamp(path) == before, path
        assert self.phone.daemon.process.running

    def try_out(self, record):
        """Announces the record, checks what comes of it, and has it removed."""
        try:
            self.announce(record)
            self.check_refusal(record)
            if record.refusal:
                self.check_others()
                self.check_sharing()
            else:
                self.check_written(record)
        finally:
            self.phone.runtime.call_launcher(REMOVE_PACKAGE, string16(record.package))
            if record.is_handler():
                claim_missing_settings_entries(self.phone)
        self.check_others()
        self.check_sharing()

    def check_written(self, record):
        entry = entry_of(record)
        written = [entry, icon_path(entry)]
        self.written.append((record, entry.read_bytes()))
        check_entry(record, entry)
        assert icon_path(entry).read_bytes() == (record.icon or b"")
        if not record.is_handler():
            written.append(settings_path(entry))
            check_settings(record, entry)
        self.check_others(*written)
        self.check_sharing(*([record] if record.share_mime_types() else []))

        before = [stamp(path) for path in (*written, SHARING)]
        self.announce(record)
        self.phone.runtime.call_launcher(COMPLETE)
        assert [stamp(path) for path in (*written, SHARING)] == before
        assert key_file_of(CACHE).get_groups()[0] == ["MIME Cache"]


def without_doubles(pairs):
    assert len({key for key, value in pairs}) == len(pairs), pairs
    return dict(pairs)


def test_every_record_has_the_files_that_were_meant_or_none(phone, tmp_path):
    start_beside_runtime(phone)
    host = Host(phone)
    failures = []

    def note(record, check, *arguments):
        try:
            check(record, *arguments)
        except (AssertionError, GLib.Error, KeyError, OSError, TypeError, ValueError) as error:
            failures.append(f"{record.about}: {type(error).__name__} {error}"[:2000])

    for record in RECORDS:
        note(record, host.try_out)
    records, contents = zip(*host.written)
    for record, found in zip(records, read_as_ini(tmp_path, contents)):
        note(record, check_entry_as_ini, found)
    assert len(records) == len([record for record in RECORDS if not record.refusal])
    assert not failures, f"{len(failures)} of {len(RECORDS)}:\n" + "\n".join(failures)
    assert len({record.about for record in RECORDS}) == len(RECORDS) > 200
    assert files_elsewhere() == host.elsewhere


def test_an_icon_that_no_message_can_hold_changes_nothing(phone):
    """The driver refuses the message, which its sender is told, and the daemon hears nothing."""
    start_beside_runtime(phone)
    host = Host(phone)
    record = Record("20 MiB", icon=b"")
    start_of_icon = record.data()[:-4] + int32(20 * MEBIBYTE)
    since = phone.daemon.log.mark()

    status = phone.runtime.flood(record.code(), 1, start_of_icon, zeros=20 * MEBIBYTE)

    assert status == FAILED_TRANSACTION
    host.check_others()
    host.check_sharing()

    fitting = Record("the same with an icon that fits", icon=bytes(MEBIBYTE))
    assert fitting.data() == start_of_icon[:-4] + int32(MEBIBYTE) + fitting.icon
    host.try_out(fitting)
    heard = [text for text in phone.daemon.log.texts(since) if text.startswith("Read ")]
    assert set(heard) == {f'Read {len(fitting.icon)} bytes for "{fitting.package}" icon'}
