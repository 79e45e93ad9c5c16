"""What the runtime announces becomes files, whatever it announces."""

import re
from pathlib import Path

import pytest

from phone.namespace import make_read_only, mount_tmpfs, unmount
from phone.waiting import wait_for

from daemonsteps import (LAUNCHER, claim_missing_settings_entries, start_beside_runtime,
                         wait_until_announced)
from hostfiles import (APPLICATIONS, ICONS, PARTNER_SPACE, SETTINGS, SHARING, download, entries,
                       entry_path, icon_path, read_entry, read_json, settings_path, traces)
from parcels import (ADD_HANDLER, ADD_LAUNCHER, COMPLETE, REMOVE_PACKAGE, byte_array, handler,
                     int32, launcher, string16)

PACKAGE = "a.b_c"
ENTRY = entry_path(PACKAGE, "a.b.Main")
HANDLER = entry_path(PACKAGE, "a.b.Open", handler=True)
BLACKLIST = Path("/etc/bramd/app-blacklist")


@pytest.fixture(name="announce")
def announce_fixture(phone):
    """Calls "umbra.launcher" from inside the runtime; the call is over when this returns."""
    start_beside_runtime(phone)

    def call(code, data=b"", status=0):
        assert phone.runtime.call_launcher(code, data) == (status, b"")
    return call


def fill(directory):
    """Leaves no room on the file system of this directory."""
    with (directory / "filling").open("wb", buffering=0) as file:
        try:
            while True:
                file.write(bytes(512))
        except OSError:
            pass


def stamps(*paths):
    return [(path.stat().st_ino, path.stat().st_mtime_ns) for path in paths]


def test_a_launcher_becomes_an_entry_an_icon_and_a_settings_page(phone, announce):
    announce(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "Übung", "7", b"icon bytes"))
    assert ENTRY.name == "bramd_launcher_a_b__c-a_b_Main.desktop"
    assert read_entry(ENTRY)["Name"] == "Übung"
    assert icon_path(ENTRY).read_bytes() == b"icon bytes"
    assert settings_path(ENTRY).exists()
    log = phone.daemon.log
    log.expect(f'Read 10 bytes for "{PACKAGE}" icon', "debug", LAUNCHER)
    log.expect(f'Launcher added from umbra: "Übung" ( "{PACKAGE}" )', "debug", LAUNCHER)
    log.expect(f'onCreateLauncher: "{ENTRY}"', "debug", LAUNCHER)
    log.expect(f'iconfilename: "{icon_path(ENTRY)}"', "debug", LAUNCHER)
    log.expect(f'Updating: "{ENTRY}"', "debug", LAUNCHER)


def test_a_handler_becomes_a_hidden_entry(phone, announce):
    announce(ADD_HANDLER, handler(PACKAGE, "a.b.Open", "Open", mime_types="text/x-a;text/x-b",
                                  schemes="one;;two;", url_handlers="example.org"))
    entry = read_entry(HANDLER)
    assert entry["NoDisplay"] == "true"
    assert entry["MimeType"] == ("text/x-a;text/x-b;x-scheme-handler/one;x-scheme-handler/two;"
                                 "x-url-handler/example.org")
    assert entry["Exec"] == f"bramd-launcher -d %U {PACKAGE}.apk {PACKAGE}/a.b.Open"
    assert not settings_path(HANDLER).exists()
    phone.daemon.log.expect(
        f'Handler added from umbra: "Open" "" ( "{PACKAGE}" ) "text/x-a;text/x-b" "" "one;;two;" '
        '"example.org"', "debug", LAUNCHER)


def test_empty_parts_are_kept_among_mime_types_only(announce):
    announce(ADD_HANDLER, handler(PACKAGE, "a.b.Open", "Open", mime_types=";;", schemes=";;",
                                  url_handlers=";;"))
    assert read_entry(HANDLER)["MimeType"] == ";;"


def test_the_same_announcement_again_changes_no_file(phone, announce):
    share = handler(PACKAGE, "a.b.Share", "Share", "Caption", share_mime_types="text/plain")
    messages = [(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "Name")), (ADD_HANDLER, share)]
    for message in messages:
        announce(*message)
    share_entry = entry_path(PACKAGE, "a.b.Share", handler=True)
    files = [ENTRY, icon_path(ENTRY), settings_path(ENTRY), share_entry, icon_path(share_entry),
             SHARING]
    before, since = stamps(*files), phone.daemon.log.mark()
    for message in messages:
        announce(*message)
    assert stamps(*files) == before
    assert not phone.daemon.log.count(re.compile("Updating: .*"), since)


def test_a_changed_label_changes_its_line_only(announce):
    announce(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "Old"))
    before = ENTRY.read_text(encoding="utf-8")
    announce(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "New"))
    assert ENTRY.read_text(encoding="utf-8") == before.replace("Name=Old", "Name=New")


def test_keys_of_others_survive_an_update(announce):
    announce(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "Old"))
    with ENTRY.open("a", encoding="utf-8") as file:
        file.write("Name[de]=Alt\nComment=a=b\n")
    announce(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "New"))
    entry = read_entry(ENTRY)
    assert (entry["Name"], entry["Name[de]"], entry["Comment"]) == ("New", "Alt", "a=b")
    assert list(entry) == sorted(entry)


def test_an_icon_changes_by_itself(announce):
    announce(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "Name", icon=b"one"))
    before = stamps(ENTRY)
    announce(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "Name", icon=b"two"))
    assert icon_path(ENTRY).read_bytes() == b"two"
    assert stamps(ENTRY) == before


def test_orphans_go_when_the_list_is_complete(phone, announce):
    announce(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "Known"))
    orphan = entry_path("gone.app", "gone.app.Main")
    orphan.write_text("[Desktop Entry]\nName=Gone\nX-bramd-packageName=gone.app\n", "utf-8")
    icon_path(orphan).write_bytes(b"icon")
    settings_path(orphan).write_text("{}", "utf-8")
    foreign = APPLICATIONS / "org.host.desktop"
    foreign.write_text("[Desktop Entry]\nName=Host\n", "utf-8")

    announce(COMPLETE)

    assert entries() == [ENTRY.name]
    assert foreign.exists()
    assert not icon_path(orphan).exists()
    assert not settings_path(orphan).exists()
    phone.daemon.log.expect(f'Removing  "{orphan}"', "debug", LAUNCHER)


def test_a_launcher_that_became_a_handler_leaves_one_entry(phone, announce):
    announce(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "Name"))
    announce(ADD_HANDLER, handler(PACKAGE, "a.b.Main", "Name", mime_types="text/plain"))
    assert len(entries()) == 2
    announce(COMPLETE)
    assert entries() == [entry_path(PACKAGE, "a.b.Main", handler=True).name]
    phone.daemon.log.expect(f'Removing  "{ENTRY}"', "debug", LAUNCHER)


def test_a_completion_without_launchers_removes_all(phone, announce):
    orphans = [entry_path("gone.app", "x.Main"), entry_path("gone.app", "x.Open", handler=True)]
    for orphan in orphans:
        orphan.write_text("[Desktop Entry]\nX-bramd-packageName=gone.app\n", "utf-8")
        icon_path(orphan).write_bytes(b"icon")
    settings_path(orphans[0]).write_text("{}", "utf-8")
    announce(COMPLETE)
    assert not traces()
    assert claim_missing_settings_entries(phone) == 1


def test_a_removed_package_loses_everything_and_others_nothing(phone, announce):
    announce(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "Name"))
    announce(ADD_HANDLER, handler(PACKAGE, "a.b.Open", "Open", share_mime_types="text/plain"))
    announce(ADD_LAUNCHER, launcher("other.app", "other.Main", "Other"))
    announce(REMOVE_PACKAGE, string16(PACKAGE))
    other = entry_path("other.app", "other.Main")
    assert entries() == [other.name]
    assert icon_path(other).exists() and settings_path(other).exists()
    assert read_json(SHARING) == {}
    log = phone.daemon.log
    log.expect(f'onRemovePackage: "{PACKAGE}"', "debug", LAUNCHER)
    log.expect(f'Package "{PACKAGE}" removed from sharing file. Writing.', "debug", LAUNCHER)
    assert claim_missing_settings_entries(phone) == 1
    # It is not announced any more, so it must not come back to be kept either.
    announce(COMPLETE)
    assert entries() == [other.name]


def test_the_sharing_registry_lists_every_target(phone, announce):
    assert SHARING.read_bytes() == b""
    announce(ADD_HANDLER, handler(PACKAGE, "a.b.One", "One", "Caption one",
                                  share_mime_types="text/plain;image/*"))
    announce(ADD_HANDLER, handler(PACKAGE, "a.b.Many", "Many", "Caption many",
                                  share_mime_types="image/*", multi=True))
    one, many = (entry_path(PACKAGE, name, handler=True) for name in ("a.b.One", "a.b.Many"))
    assert read_json(SHARING) == {PACKAGE: {
        "a.b.One": {"label": "One", "caption": "Caption one", "icon": str(icon_path(one)),
                    "mimetypes": ["text/plain", "image/*"], "multi": False},
        "a.b.Many": {"label": "Many", "caption": "Caption many", "icon": str(icon_path(many)),
                     "mimetypes": ["image/*"], "multi": True}}}
    assert "MimeType" not in read_entry(one)
    assert read_entry(one)["Exec"] == f"bramd-launcher {PACKAGE}.apk {PACKAGE}/a.b.One"
    phone.daemon.log.expect(f'Adding "{PACKAGE}" "a.b.One" to sharing plugins', "debug", LAUNCHER)


def test_share_targets_of_an_earlier_run_are_forgotten(phone):
    ICONS.mkdir(parents=True)
    SHARING.write_text('{"old.app": {}}', "utf-8")
    phone.start_daemon()
    assert SHARING.read_bytes() == b""


class TestBlacklist:
    """Listed packages are kept off the host."""

    @pytest.fixture(autouse=True)
    def listed(self, phone, tmp_path):
        BLACKLIST.write_text(f"\n  \t{PACKAGE} \t\n\nanother.app\nanother.app", "utf-8")
        extra = tmp_path / "blacklist"
        extra.write_text("extra.app\n", "utf-8")
        start_beside_runtime(phone, {"BRAMD_PACKAGE_BLACKLIST_PATH": str(extra)})

    @pytest.mark.parametrize("package", [PACKAGE, "another.app", "extra.app"])
    def test_a_listed_launcher_is_hidden(self, phone, package):
        phone.runtime.call_launcher(ADD_LAUNCHER, launcher(package, "a.b.Main", "Name"))
        assert read_entry(entry_path(package, "a.b.Main"))["NoDisplay"] == "true"

    def test_a_listed_handler_or_share_target_is_dropped(self, phone):
        for extra in ({"mime_types": "text/plain"}, {"share_mime_types": "text/plain"}):
            phone.runtime.call_launcher(ADD_HANDLER,
                                        handler(PACKAGE, "a.b.Open", "Open", **extra))
        assert not traces()

    @pytest.mark.parametrize("package", ["A.B_C", "a.b", "another.app.more"])
    def test_other_packages_are_shown(self, phone, package):
        phone.runtime.call_launcher(ADD_LAUNCHER, launcher(package, "a.b.Main", "Name"))
        assert "NoDisplay" not in read_entry(entry_path(package, "a.b.Main"))


def test_an_app_of_the_partner_space_is_hidden(announce):
    PARTNER_SPACE.mkdir(parents=True)
    (PARTNER_SPACE / "partner.app.apk").touch()
    announce(ADD_LAUNCHER, launcher("partner.app", "partner.Main", "Partner"))
    entry = read_entry(entry_path("partner.app", "partner.Main"))
    assert (entry["NoDisplay"], entry["Categories"]) == ("true", "X-TidewaterPartnerSpace")


def test_a_real_app_is_announced_again_after_a_restart_of_the_daemon(phone, announce):
    del announce
    assert phone.bramd.call("installFile", "s", str(download("papertrail")))
    phone.notifications.wait_for_notice()
    wait_for(lambda: len(entries()) == 5, lambda: f"five entries in {entries()}")
    before = traces()
    phone.stop_daemon()
    phone.start_daemon()
    wait_until_announced(phone)
    assert traces() == before


class TestHostileAnnouncements:
    """The container is not trusted."""

    def alive(self, phone, announce):
        announce(ADD_LAUNCHER, launcher("fine.app", "fine.Main", "Fine"))
        assert entry_path("fine.app", "fine.Main").exists()
        assert phone.daemon.process.running

    def test_a_line_break_in_a_label_adds_no_key(self, phone, announce):
        announce(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "Name\nExec=evil\r\n[X]\0Y"))
        entry = read_entry(ENTRY)
        assert entry["Exec"] == f"bramd-launcher {PACKAGE}.apk {PACKAGE}/a.b.Main"
        assert entry["Name"] == "Name Exec=evil  [X] Y"
        self.alive(phone, announce)

    def test_a_line_break_in_a_mime_type_adds_no_key(self, announce):
        announce(ADD_HANDLER, handler(PACKAGE, "a.b.Open", "Open", mime_types="text/x\nExec=evil",
                                      schemes="a\nExec=evil", url_handlers="b\nExec=evil"))
        entry = read_entry(HANDLER)
        assert entry["Exec"] == f"bramd-launcher -d %U {PACKAGE}.apk {PACKAGE}/a.b.Open"
        assert entry["MimeType"] == ("text/x Exec=evil;x-scheme-handler/a Exec=evil;"
                                     "x-url-handler/b Exec=evil")

    @pytest.mark.parametrize("package, activity", [
        ("../../etc/evil", "a.Main"), ("a.b", "../../../etc/evil"), ("a\nb", "a.Main"),
        ("a.b", "a\0b"), ("/", "/"), ("a.b", "x/y"),
    ])
    @pytest.mark.parametrize("code, make", [(ADD_LAUNCHER, launcher), (ADD_HANDLER, handler)])
    def test_a_name_that_is_no_file_name_is_dropped(self, phone, announce, package, activity, code,
                                                    make):
        before = sorted(Path("/etc").iterdir())
        announce(code, make(package, activity, "Evil"))
        assert not traces()
        assert sorted(Path("/etc").iterdir()) == before
        warnings = [record for record in phone.daemon.log.records if record.level == "warning"]
        assert len(warnings) == 1
        warnings[0].claimed = True
        self.alive(phone, announce)

    @pytest.mark.parametrize("data", [
        b"", b"\0", int32(-2), int32(0x7fffffff), int32(-0x80000000),
        string16("a.b") + int32(0x7ffffff0), string16("a.b") + string16("a.Main")[:-4],
        launcher(PACKAGE, "a.b.Main", "Name")[:-4],
        b"".join(map(string16, ("a.b", "a.Main", "l", "v"))) + int32(0x7fffffff),
        b"".join(map(string16, ("a.b", "a.Main", "l", "v"))) + int32(-5) + bytes(64),
        b"\xff" * 4096,
    ], ids=lambda data: data[:24].hex() or "nothing")
    @pytest.mark.parametrize("code", [ADD_LAUNCHER, REMOVE_PACKAGE, ADD_HANDLER])
    def test_a_malformed_parcel_does_no_harm(self, phone, announce, code, data):
        announce(code, data)
        self.forgive_one_complaint(phone)
        self.alive(phone, announce)

    @staticmethod
    def forgive_one_complaint(phone):
        trouble = [record for record in phone.daemon.log.records
                   if record.level in ("warning", "critical")]
        assert len(trouble) <= 1, phone.daemon.log.tail()
        for record in trouble:
            record.claimed = True

    @pytest.mark.parametrize("code", [0, 5, 0xffffff])
    def test_an_unknown_code_is_not_handled(self, phone, announce, code):
        announce(code, b"", status=1)
        phone.daemon.log.expect(f"Unknown binder call ( {code} )", "debug", LAUNCHER)
        self.alive(phone, announce)

    def test_a_call_without_a_token_does_no_harm(self, phone, announce):
        phone.runtime.call_launcher(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "x"), token=False)
        self.forgive_one_complaint(phone)
        self.alive(phone, announce)

    def test_a_large_icon_is_kept_whole(self, announce):
        icon = bytes(range(256)) * 1024
        announce(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "Name", icon=icon))
        assert icon_path(ENTRY).read_bytes() == icon

    def test_a_null_icon_and_null_strings_give_an_entry(self, phone, announce):
        announce(ADD_LAUNCHER, string16("a.b") + string16("a.Main") + string16(None)
                 + string16(None) + byte_array(None))
        assert read_entry(entry_path("a.b", "a.Main"))["Name"] == ""
        self.alive(phone, announce)

    def test_one_way_announcements_are_taken_too(self, phone, announce):
        phone.runtime.call_launcher(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "x"), oneway=True)
        wait_for(ENTRY.exists, "the entry")
        self.alive(phone, announce)

    def test_the_order_of_many_announcements_is_kept(self, phone, announce):
        del announce
        for number in range(50):
            phone.runtime.call_launcher(
                ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", f"Name {number}"), oneway=True)
        wait_for(lambda: ENTRY.exists() and read_entry(ENTRY)["Name"] == "Name 49",
                 "the last announcement")


class TestDisksThatFail:
    """What cannot be written is logged, and the rest goes on."""

    def test_an_icon_that_cannot_be_written(self, phone, announce):
        icon_path(ENTRY).mkdir()
        announce(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "Name"))
        phone.daemon.log.expect(f'Unable to write icon: "{icon_path(ENTRY)}"', "warning", LAUNCHER)
        assert read_entry(ENTRY)["Icon"] == str(icon_path(ENTRY))
        assert settings_path(ENTRY).exists()

    def test_a_settings_entry_that_cannot_be_written(self, phone, announce):
        settings_path(ENTRY).mkdir()
        announce(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "Name"))
        phone.daemon.log.expect(f'Unable to open json file "{settings_path(ENTRY)}" for writing',
                                "warning", LAUNCHER)
        assert ENTRY.exists()

    def test_a_settings_directory_that_is_missing(self, phone, announce):
        SETTINGS.rmdir()
        try:
            announce(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "Name"))
        finally:
            SETTINGS.mkdir()
        phone.daemon.log.expect(f'Unable to open json file "{settings_path(ENTRY)}" for writing',
                                "warning", LAUNCHER)
        assert ENTRY.exists()

    def test_a_read_only_application_directory(self, phone, announce):
        announce(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "Old"))
        before = ENTRY.read_bytes()
        make_read_only(APPLICATIONS)
        try:
            announce(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "New", icon=b"new"))
            phone.daemon.log.expect(f'Could not open "{ENTRY}" for writing', "warning", LAUNCHER)
            announce(REMOVE_PACKAGE, string16(PACKAGE))
            phone.daemon.log.expect(f'Could not remove: "{ENTRY}"', "warning", LAUNCHER)
        finally:
            unmount(APPLICATIONS)
        assert ENTRY.read_bytes() == before
        assert not icon_path(ENTRY).exists()
        assert not settings_path(ENTRY).exists()

    def test_a_full_application_directory(self, phone, announce):
        mount_tmpfs(APPLICATIONS, "size=64k", "mode=755")
        try:
            announce(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "Old"))
            before = ENTRY.read_bytes()
            fill(APPLICATIONS)
            announce(ADD_LAUNCHER, launcher(PACKAGE, "a.b.Main", "New"))
            phone.daemon.log.expect(
                re.compile(rf'Could not (open|write desktop file) "{ENTRY}".*'), "warning",
                LAUNCHER)
            assert ENTRY.read_bytes() == before
        finally:
            unmount(APPLICATIONS)

    def test_a_full_disk_for_icons_and_targets(self, phone, announce):
        mount_tmpfs(ICONS, "size=64k", "mode=755")
        try:
            SHARING.touch()
            fill(ICONS)
            announce(ADD_HANDLER, handler(PACKAGE, "a.b.Open", "Open", share_mime_types="text/x",
                                          icon=bytes(10000)))
            phone.daemon.log.expect(f'Unable to write icon: "{icon_path(HANDLER)}"', "warning",
                                    LAUNCHER)
            phone.daemon.log.expect("Unable to write sharing file", "warning", LAUNCHER)
            assert SHARING.read_bytes() == b""
            assert not icon_path(HANDLER).exists()
            assert read_entry(HANDLER)["Icon"] == str(icon_path(HANDLER))
        finally:
            unmount(ICONS)

    def test_a_sharing_registry_that_cannot_be_written(self, phone, announce):
        SHARING.unlink()
        SHARING.mkdir()
        announce(ADD_HANDLER, handler(PACKAGE, "a.b.Share", "Share", share_mime_types="text/x"))
        phone.daemon.log.expect("Unable to write sharing file", "warning", LAUNCHER)
        SHARING.rmdir()
        announce(ADD_HANDLER, handler(PACKAGE, "a.b.More", "More", share_mime_types="text/x"))
        assert set(read_json(SHARING)[PACKAGE]) == {"a.b.Share", "a.b.More"}
