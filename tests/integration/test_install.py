"""The main job: an APK becomes an app of the host, and leaves without a trace."""

import re
import zipfile

import pytest

from phone.waiting import wait_for

from daemonsteps import (BINDER, DAEMON, LAUNCHER, claim_missing_settings_entries,
                         start_beside_runtime, wait_until_announced)
from hostfiles import (APKS, APPLICATIONS, DOWNLOADS, ICONS, INCOMING, SHARING, download, entries,
                       entry_path, icon_path, owner_and_mode, read_entry, read_json, settings_path,
                       traces)
from packagerequests import (check_install, check_removal, installs, removals,
                             removed_packages)
from texts import ENGLISH, catalogue

SDK_LEVELS = [pytest.param(sdk, marks=pytest.mark.phone(sdk=sdk)) for sdk in (27, 28, 29, 30)]

PAPERTRAIL = "org.example.papertrail"
PAPERTRAIL_ENTRIES = {
    "main": entry_path(PAPERTRAIL, f"{PAPERTRAIL}.MainActivity"),
    "document": entry_path(PAPERTRAIL, f"{PAPERTRAIL}.ViewDocumentActivity", handler=True),
    "link": entry_path(PAPERTRAIL, f"{PAPERTRAIL}.OpenLinkActivity", handler=True),
    "share one": entry_path(PAPERTRAIL, f"{PAPERTRAIL}.ShareOneActivity", handler=True),
    "share many": entry_path(PAPERTRAIL, f"{PAPERTRAIL}.ShareManyActivity", handler=True),
}

MAIN_ENTRY = """[Desktop Entry]
Exec=bramd-launcher org.example.papertrail.apk org.example.papertrail/{activity}
Icon=/var/lib/bramd/bramd_launcher_org_example_papertrail-org_example_papertrail_MainActivity.png
Name=Paper Trail
Type=Application
Version=1.0
X-Orca-Application-Type=no-invoker
X-bramd-apkfile=/home/.android/data/app//org.example.papertrail.apk
X-bramd-packageName=org.example.papertrail
""".format(activity=f"{PAPERTRAIL}.MainActivity")

DOCUMENT_ENTRY = {
    "Exec": f"bramd-launcher -d %U {PAPERTRAIL}.apk {PAPERTRAIL}/{PAPERTRAIL}.ViewDocumentActivity",
    "Icon": str(icon_path(PAPERTRAIL_ENTRIES["document"])),
    "MimeType": "application/pdf",
    "Name": "Paper Trail",
    "NoDisplay": "true",
    "Type": "Application",
    "Version": "1.0",
    "X-Orca-Application-Type": "no-invoker",
    "X-bramd-apkfile": f"/home/.android/data/app//{PAPERTRAIL}.apk",
    "X-bramd-packageName": PAPERTRAIL,
}

SETTINGS_ENTRY = {"entries": [{
    "path": f"applications/{PAPERTRAIL_ENTRIES['main'].name}",
    "type": "page",
    "params": {
        "source": "/usr/share/corvo-settings/pages/apk-configuration/apkConfigurationPage.qml",
        "properties": {"packageName": PAPERTRAIL, "packageVersion": "1.4"},
    }}]}


@pytest.fixture(name="state", params=["stopped", "starting", "running"])
def state_fixture(request, phone):
    """The runtime's state when the daemon is asked; returns what lets it go on from there."""
    if request.param == "running":
        start_beside_runtime(phone)
        return lambda: None
    phone.start_daemon()
    if request.param == "starting":
        phone.unit.hold_activation(True)
        phone.unit.start()
        phone.daemon.log.expect('Umbra VM is "activating" ( "start" )')
        return lambda: phone.unit.hold_activation(False)
    return lambda: None


def packaged_pngs(apk):
    with zipfile.ZipFile(APKS / f"{apk}.apk") as archive:
        return [archive.read(name) for name in archive.namelist() if name.endswith(".png")]


def wait_for_app(phone, since):
    phone.notifications.wait_for_notice()
    wait_until_announced(phone, since)
    wait_for(lambda: len(entries()) == len(PAPERTRAIL_ENTRIES), lambda: f"entries in {entries()}")


@pytest.mark.parametrize("sdk", SDK_LEVELS)
def test_an_apk_becomes_an_app_and_leaves_without_a_trace(phone, sdk, state):
    log, go_on = phone.daemon.log, state
    assert phone.bramd.call("getAndroidVersionData")[0] == sdk
    before = phone.unit.state()
    phone.unit.forget()
    apk = download("papertrail")
    staged = INCOMING / apk.name
    since = log.mark()

    assert phone.bramd.call("installFile", "s", str(apk)) is True

    log.expect(f'installFile: "{apk}"', "debug", DAEMON, since)
    log.expect('Asking QRT to install: "/data/xrs-staging/app/incoming/papertrail.apk"', "debug",
               DAEMON, since)
    assert staged.read_bytes() == apk.read_bytes()
    assert owner_and_mode(staged) == (0, 0, 0o644)
    assert [path.name for path in INCOMING.iterdir()] == [apk.name]
    waiting = ('Umbravm not running. Saving  '
               'PackageMod("/data/xrs-staging/app/incoming/papertrail.apk", install)  for later')
    assert bool(log.count(waiting, since)) is (before != "active")

    go_on()
    phone.unit.wait_for_state("active")
    wait_for_app(phone, since)

    start = [("StartUnit", ["umbravm.service", "replace"])]
    assert phone.unit.calls("StartUnit") == (start if before == "inactive" else [])
    assert len(installs(phone.runtime)) == 1
    check_install(phone.runtime, "/data/xrs-staging/app/incoming/papertrail.apk")
    log.expect(re.compile(r"Installing .*papertrail\.apk.*"), "debug", DAEMON, since)
    log.expect(re.compile(rf'Package install result 1 for "{PAPERTRAIL}" \( .* \)'), "debug",
               BINDER, since)
    check_notice(phone)
    check_host_files()

    remove_and_check(phone)


def check_notice(phone):
    assert len(phone.notifications.notices()) == 1
    notice = phone.notifications.notices()[0]
    assert notice["application"] == ENGLISH["bramd-ap-name"]
    assert notice["icon"] == "icon-s-android"
    # The runtime may report the result before it has announced the app and thus its name.
    title = ENGLISH["bramd-install-success"]
    assert notice["summary"] in (f"{title}: ", f"{title}: Paper Trail")
    assert notice["hints"]["transient"] is True


def check_host_files():
    main = PAPERTRAIL_ENTRIES["main"]
    assert entries() == sorted(path.name for path in PAPERTRAIL_ENTRIES.values())
    assert main.read_text(encoding="utf-8") == MAIN_ENTRY
    assert read_entry(PAPERTRAIL_ENTRIES["document"]) == DOCUMENT_ENTRY
    link = read_entry(PAPERTRAIL_ENTRIES["link"])
    assert "x-scheme-handler/https" in link["MimeType"].split(";")
    assert "x-url-handler/papertrail.example.org" in link["MimeType"].split(";")
    assert "MimeType" not in read_entry(PAPERTRAIL_ENTRIES["share one"])
    assert icon_path(main).read_bytes() in packaged_pngs("papertrail")
    assert read_json(settings_path(main)) == SETTINGS_ENTRY
    assert read_json(SHARING) == {PAPERTRAIL: {
        f"{PAPERTRAIL}.ShareOneActivity": {
            "label": "Paper Trail", "caption": "File in Paper Trail", "multi": False,
            "icon": str(icon_path(PAPERTRAIL_ENTRIES["share one"])),
            "mimetypes": ["application/pdf", "text/plain"]},
        f"{PAPERTRAIL}.ShareManyActivity": {
            "label": "Paper Trail", "caption": "Scan into Paper Trail", "multi": True,
            "icon": str(icon_path(PAPERTRAIL_ENTRIES["share many"])),
            "mimetypes": ["image/*"]}}}


def remove_and_check(phone):
    log = phone.daemon.log
    since = log.mark()
    phone.notifications.forget()
    main = PAPERTRAIL_ENTRIES["main"]

    assert phone.bramd.call("removeFile", "s", str(main)) is True

    log.expect(f'removeFile: "{main}"', "debug", DAEMON, since)
    log.expect(f'Resolved: "{main}" ->  "{PAPERTRAIL}"', "debug", LAUNCHER, since)
    log.expect(re.compile(rf"Uninstalling .*{PAPERTRAIL}.*"), "debug", DAEMON, since)
    log.expect(f'Package removed from umbra: "{PAPERTRAIL}"', "debug", LAUNCHER, since)
    wait_for(lambda: not traces(), lambda: f"the end of {traces()}")
    assert len(removals(phone.runtime)) == 1
    check_removal(phone.runtime, PAPERTRAIL)
    for path in PAPERTRAIL_ENTRIES.values():
        log.expect(f'Deleting: "{path}"', "debug", LAUNCHER, since)
        log.expect(f'Deleting: "{icon_path(path)}"', "debug", LAUNCHER, since)
    assert claim_missing_settings_entries(phone, since) == 4
    assert phone.runtime.apps() == []
    assert not list(ICONS.glob("*.png"))
    if phone.runtime.sdk == 30:
        # The daemon has no code of its own for a removal at this level and says so.
        log.expect("Unsupported android SDK version!", "critical", BINDER, since)
    assert not phone.notifications.notices()


def test_an_app_is_removed_by_its_package_name(phone):
    start_beside_runtime(phone)
    assert phone.bramd.call("installFile", "s", str(download("weather")))
    phone.notifications.wait_for_notice()
    wait_for(entries, "the desktop entry")
    assert phone.bramd.call("removeFile", "s", "org.example.weather")
    wait_for(lambda: not traces(), lambda: f"the end of {traces()}")


def test_an_update_replaces_the_app_in_place(phone):
    start_beside_runtime(phone)
    entry = entry_path("org.example.metronome", "org.example.metronome.MainActivity")
    assert phone.bramd.call("installFile", "s", str(download("metronome-1", "metronome.apk")))
    phone.notifications.wait_for_notice()
    wait_for(settings_path(entry).exists, "the settings entry")
    version = read_json(settings_path(entry))["entries"][0]["params"]["properties"]
    assert version["packageVersion"] == "1.0"
    assert phone.bramd.call("installFile", "s", str(download("metronome-2", "metronome.apk")))
    phone.daemon.log.expect(
        f'File already exists in incoming folder: "{INCOMING}/metronome.apk"', "warning", DAEMON)
    phone.notifications.wait_for_notice(2)
    wait_for(lambda: read_json(settings_path(entry))["entries"][0]["params"]["properties"]
             ["packageVersion"] == "2.0", "the new version")
    assert entries() == [entry.name]


def test_an_older_version_is_refused_and_the_app_stays(phone):
    start_beside_runtime(phone)
    assert phone.bramd.call("installFile", "s", str(download("metronome-2")))
    phone.notifications.wait_for_notice()
    wait_for(entries, "the desktop entry")
    before = traces()
    assert phone.bramd.call("installFile", "s", str(download("metronome-1")))
    notice = phone.notifications.wait_for_notice(2)
    assert notice["summary"].startswith(ENGLISH["bramd-install-failed"])
    assert traces() == before


def test_apps_of_other_programs_are_left_alone(phone):
    foreign = APPLICATIONS / "org.example.host.desktop"
    foreign.write_text("[Desktop Entry]\nName=Host app\nX-bramd-packageName=org.example.weather\n",
                       encoding="utf-8")
    start_beside_runtime(phone)
    assert phone.bramd.call("installFile", "s", str(download("weather")))
    phone.notifications.wait_for_notice()
    wait_for(entries, "the desktop entry")
    assert phone.bramd.call("removeFile", "s", "org.example.weather")
    wait_for(lambda: not traces(), lambda: f"the end of {traces()}")
    assert foreign.exists()


@pytest.mark.parametrize("apk, reason", [
    ("truncated", "bramd-install-fail-invalid"),
    ("text", "bramd-install-fail-invalid"),
    ("starmap", "bramd-install-fail-incompat"),
])
def test_an_apk_that_the_runtime_refuses_is_reported_with_the_reason(phone, apk, reason):
    start_beside_runtime(phone)
    file = download("starmap")
    if apk == "truncated":
        file = download("papertrail", "truncated.apk")
        file.write_bytes(file.read_bytes()[:5000])
    elif apk == "text":
        file.write_text("This is no archive.\n", encoding="utf-8")

    assert phone.bramd.call("installFile", "s", str(file)) is True

    notice = phone.notifications.wait_for_notice()
    assert notice["application"] == ENGLISH["bramd-ap-name"]
    assert notice["icon"] == "icon-s-android"
    assert notice["summary"].startswith(ENGLISH["bramd-install-failed"])
    phone.daemon.log.expect(re.compile(r"Package install result -\d+ for .*"), "debug", BINDER)
    assert notice["body"] == ENGLISH[reason]
    assert not traces()


def test_two_apps_with_one_provider_conflict(phone):
    start_beside_runtime(phone)
    assert phone.bramd.call("installFile", "s", str(download("addressbook")))
    phone.notifications.wait_for_notice()
    assert phone.bramd.call("installFile", "s", str(download("addresssync")))
    notice = phone.notifications.wait_for_notice(2)
    assert notice["summary"].startswith(ENGLISH["bramd-install-failed"])
    assert notice["body"] == ENGLISH["bramd-install-fail-conflict"]


def test_the_desktop_database_knows_what_the_app_opens(phone):
    start_beside_runtime(phone)
    database = APPLICATIONS / "mimeinfo.cache"
    document = PAPERTRAIL_ENTRIES["document"].name
    since = phone.daemon.log.mark()
    assert phone.bramd.call("installFile", "s", str(download("papertrail")))
    wait_until_announced(phone, since)
    wait_for(lambda: f"application/pdf={document}" in database.read_text(encoding="utf-8"),
             "the new application in the database")
    assert phone.bramd.call("removeFile", "s", PAPERTRAIL)
    wait_for(lambda: document not in database.read_text(encoding="utf-8"),
             "the database without the application")
    claim_missing_settings_entries(phone)


@pytest.mark.phone(router_options=["--interrupted-reads", "3", "--empty-reads", "5"])
def test_reads_of_the_device_may_end_early(phone):
    start_beside_runtime(phone)
    for count, name in enumerate(("papertrail", "weather", "addressbook"), 1):
        assert phone.bramd.call("installFile", "s", str(download(name)))
        phone.notifications.wait_for_notice(count)
    wait_for(lambda: len(entries()) == 7, lambda: f"seven entries in {entries()}")


@pytest.mark.phone(services=[])
def test_without_a_notification_service_the_notice_is_lost_silently(phone):
    start_beside_runtime(phone)
    assert phone.bramd.call("installFile", "s", str(download("weather")))
    wait_for(entries, "the desktop entry")
    phone.daemon.log.expect(re.compile(r"Package install result 1 for .*"), "debug", BINDER)


def test_a_notification_service_that_hangs_holds_nothing_up(phone):
    start_beside_runtime(phone)
    phone.notifications.process.pause()
    assert phone.bramd.call("installFile", "s", str(download("weather")))
    wait_for(entries, "the desktop entry")
    assert phone.bramd.call("getAndroidVersionData", timeout_ms=2000)
    phone.notifications.process.go_on()
    assert phone.notifications.wait_for_notice()


def test_callers_at_the_same_time_are_all_served(phone):
    start_beside_runtime(phone)
    answers = [phone.bramd.start_call("installFile", "s", str(download(name)))
               for name in ("papertrail", "weather", "addressbook", "metronome-1")]
    wait_for(lambda: all(answers), "all answers")
    assert [answer[0] for answer in answers] == [True] * 4
    phone.notifications.wait_for_notice(4)
    assert len(phone.runtime.apps()) == 4


@pytest.mark.parametrize("locale", ["C", "C.UTF-8", "de_DE.UTF-8"])
def test_a_file_name_beyond_ascii_is_kept(phone, locale):
    start_beside_runtime(phone, {"LC_ALL": locale})
    apk = download("weather", "Wetter für Köln – heute.apk")
    assert phone.bramd.call("installFile", "s", str(apk))
    assert (INCOMING / apk.name).read_bytes() == apk.read_bytes()
    check_install(phone.runtime, f"/data/xrs-staging/app/incoming/{apk.name}")
    assert phone.notifications.wait_for_notice()
    wait_for(entries, "the desktop entry")


def test_the_result_is_told_in_the_users_language(phone):
    start_beside_runtime(phone, {"LC_ALL": "fi_FI.UTF-8", "LANGUAGE": "fi"})
    assert phone.bramd.call("installFile", "s", str(download("weather")))
    notice = phone.notifications.wait_for_notice()
    finnish = catalogue("bramd-fi")
    assert notice["application"] == finnish["bramd-ap-name"]
    assert notice["summary"].startswith(finnish["bramd-install-success"])
    assert finnish["bramd-install-success"] != ENGLISH["bramd-install-success"]


def test_a_link_to_a_file_is_as_good_as_the_file(phone):
    start_beside_runtime(phone)
    link = DOWNLOADS / "link.apk"
    link.symlink_to(download("weather"))
    assert phone.bramd.call("installFile", "s", str(link))
    assert not (INCOMING / link.name).is_symlink()
    assert phone.notifications.wait_for_notice()


def test_a_link_in_the_staging_directory_leads_nowhere(phone, tmp_path):
    start_beside_runtime(phone)
    victim = tmp_path / "victim"
    victim.write_bytes(b"precious")
    victim.chmod(0o600)
    for name in ("weather.apk", "weather.apk.tmp"):
        (INCOMING / name).symlink_to(victim)
    assert phone.bramd.call("installFile", "s", str(download("weather")))
    for pattern in ("File already exists .*", "Tmp file already exists .*"):
        phone.daemon.log.expect(re.compile(pattern), "warning", DAEMON)
    assert victim.read_bytes() == b"precious"
    assert owner_and_mode(victim) == (0, 0, 0o600)
    assert not (INCOMING / "weather.apk").is_symlink()
    assert phone.notifications.wait_for_notice()


@pytest.mark.parametrize("argument, package", [
    ("org.example.x", "org.example.x"), ("org.example.x.apk", "org.example.x"),
    ("/a/b/org.example.x.apk", "org.example.x"), ("/a/b/", ""), ("", ""), (".apk", ""),
    ("../../x.APK", "x.APK"), ("Köln.apk", "Köln"),
])
def test_what_is_removed_is_the_package_form_of_the_argument(phone, argument, package):
    start_beside_runtime(phone)
    assert phone.bramd.call("removeFile", "s", argument) is True
    assert removed_packages(phone.runtime) == [package]
