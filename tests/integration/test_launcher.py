"""What the Exec lines of the entries do: bramd-launcher, as desktops and people run it."""

import os
from pathlib import Path
from urllib.parse import unquote, urlsplit

import pytest

from phone.namespace import USER
from phone.waiting import wait_for

import tools
from daemonsteps import expect_deaths, forgive_deaths, start_beside_runtime, wait_until_connected
from hostfiles import download, entries, entry_path, read_entry
from launches import HOME_VOLUME, looks, started_intents
from parcels import ADD_LAUNCHER, launcher

MAIN = "android.intent.action.MAIN"
VIEW = "android.intent.action.VIEW"
NEW_TASK_ON_HOME = 0x10004000

PAPERTRAIL = "org.example.papertrail"
MAIN_ACTIVITY = f"{PAPERTRAIL}.MainActivity"
VIEW_ACTIVITY = f"{PAPERTRAIL}.ViewDocumentActivity"
LINK_ACTIVITY = f"{PAPERTRAIL}.OpenLinkActivity"

HOME = Path("/home") / USER
ODD_NAMES = ["plain.pdf", "a blank.pdf", "it's \"quoted\".pdf", "$HOME `id`.pdf", "100% sun %U.pdf",
             "%20.pdf", "Åse 日本.pdf", "#1?.pdf", "; rm -r &.pdf", "back\\slash.pdf", "-d.pdf"]


@pytest.fixture(name="papertrail")
def papertrail_fixture(phone):
    """The app is installed, and nothing else is recorded."""
    start_beside_runtime(phone)
    assert phone.bramd.call("installFile", "s", str(download("papertrail"))) is True
    wait_for(lambda: len(entries()) == 5, "the app's entries")
    phone.notifications.wait_for_notice()
    phone.runtime.forget()
    return phone


def launch_entry(package, activity, *opened, handler=False):
    """As a desktop does it."""
    entry = entry_path(package, activity, handler)
    assert "bramd-launcher" in read_entry(entry)["Exec"]
    result = tools.run("gio", "launch", entry, *opened, cwd=HOME)
    assert (result.returncode, result.stderr) == (0, "")


def run_launcher(*words, **environment):
    return tools.run("bramd-launcher", *words, **environment)


def run_app(activity=MAIN_ACTIVITY, **environment):
    return run_launcher(f"{PAPERTRAIL}.apk", f"{PAPERTRAIL}/{activity}", **environment)


def wait_for_intents(phone, count=1):
    wait_for(lambda: len(started_intents(phone)) >= count, f"{count} intents", 30)
    return started_intents(phone)


def main_intent(package, activity):
    return {"action": MAIN, "flags": NEW_TASK_ON_HOME, "package": package,
            "componentPackage": package, "componentClass": activity}


def view_intent(activity, **more):
    return {"action": VIEW, "package": PAPERTRAIL, "componentPackage": PAPERTRAIL,
            "componentClass": activity, **more}


def put_into_home(name, content=b"%PDF-1.4\n"):
    path = HOME / name
    path.write_bytes(content)
    return path


def opened_paths(intents):
    """The host's paths behind the intents' addresses."""
    paths = [unquote(urlsplit(intent["data"]).path) for intent in intents]
    assert all(path.startswith(HOME_VOLUME) for path in paths), paths
    return [HOME / path.removeprefix(f"{HOME_VOLUME}/") for path in paths]


def test_a_launcher_entry_starts_its_activity(papertrail):
    launch_entry(PAPERTRAIL, MAIN_ACTIVITY)
    assert wait_for_intents(papertrail) == [main_intent(PAPERTRAIL, MAIN_ACTIVITY)]
    assert looks(papertrail) == [PAPERTRAIL]


def test_a_nested_class_keeps_its_dollar(phone):
    start_beside_runtime(phone)
    package, activity = "org.example.quiz", "org.example.quiz.Outer$HOME"
    phone.runtime.call_launcher(ADD_LAUNCHER, launcher(package, activity, "Quiz"))
    launch_entry(package, activity)
    assert wait_for_intents(phone) == [main_intent(package, activity)]


def test_a_handler_entry_without_anything_to_open_starts_its_activity(papertrail):
    launch_entry(PAPERTRAIL, VIEW_ACTIVITY, handler=True)
    assert wait_for_intents(papertrail) == [main_intent(PAPERTRAIL, VIEW_ACTIVITY)]


def test_a_handler_entry_opens_files_whatever_their_names(papertrail):
    files = [put_into_home(name) for name in ODD_NAMES]
    launch_entry(PAPERTRAIL, VIEW_ACTIVITY, *files, handler=True)
    intents = wait_for_intents(papertrail, len(files))
    assert opened_paths(intents) == files
    for intent in intents:
        del intent["data"]
        assert intent == view_intent(VIEW_ACTIVITY, type="application/pdf")


def test_a_handler_entry_opens_links(papertrail):
    links = ["https://papertrail.example.org/read?page=2&x=a%26b#top",
             "https://papertrail.example.org/a.pdf"]
    launch_entry(PAPERTRAIL, LINK_ACTIVITY, *links, handler=True)
    assert wait_for_intents(papertrail, 2) == [
        view_intent(LINK_ACTIVITY, data=link) for link in links]


@pytest.mark.parametrize("locale", ["C", "C.UTF-8"])
def test_paths_and_urls_name_the_same_file(papertrail, locale):
    path = put_into_home("Åse 1.pdf")
    forms = [path, path.as_uri(), f"file://localhost{path}", f"{HOME}/x/../Åse 1.pdf"]
    result = run_launcher("-d", *forms, "Åse 1.pdf", f"{PAPERTRAIL}.apk",
                          f"{PAPERTRAIL}/{VIEW_ACTIVITY}", cwd=HOME, LC_ALL=locale)
    assert (result.returncode, result.stderr, result.stdout) == (0, "", "")
    assert opened_paths(started_intents(papertrail)) == [path] * 5


def test_the_content_of_a_file_without_ending_gives_its_type(papertrail):
    path = put_into_home("scan")
    result = run_launcher("-d", path, f"{PAPERTRAIL}.apk", f"{PAPERTRAIL}/{VIEW_ACTIVITY}")
    assert (result.returncode, result.stderr) == (0, "")
    assert started_intents(papertrail)[0]["type"] == "application/pdf"


def test_a_stopped_runtime_is_started_by_the_launch(papertrail):
    papertrail.stop_runtime()
    forgive_deaths(papertrail)
    papertrail.runtime.forget()
    result = run_app()
    assert (result.returncode, result.stderr) == (0, "")
    assert wait_for_intents(papertrail) == [main_intent(PAPERTRAIL, MAIN_ACTIVITY)]


def test_a_failed_runtime_is_started_by_the_launch(papertrail):
    since = papertrail.daemon.log.mark()
    papertrail.unit.kill_runtime()
    papertrail.unit.wait_for_state("failed")
    expect_deaths(papertrail, since)
    papertrail.runtime.forget()
    result = run_app()
    assert (result.returncode, result.stderr) == (0, "")
    papertrail.unit.wait_for_state("active")
    assert wait_for_intents(papertrail) == [main_intent(PAPERTRAIL, MAIN_ACTIVITY)]
    wait_until_connected(papertrail, since)


def complaint(result):
    """The one line that a launch that failed gives."""
    assert result.stdout == ""
    assert result.stderr.startswith("bramd-launcher: ") and result.stderr.count("\n") == 1, result
    return result.stderr.removeprefix("bramd-launcher: ").rstrip("\n")


def test_a_daemon_that_does_not_run_is_told_of(phone):
    del phone
    result = run_app()
    assert result.returncode == 4
    assert complaint(result).startswith("bramd does not run and cannot be started (")
    assert complaint(result).endswith("Look at “systemctl status bramd”.")


def test_a_bus_that_does_not_run_is_told_of(phone):
    del phone
    result = run_app(DBUS_SYSTEM_BUS_ADDRESS="unix:path=/run/nobody")
    assert result.returncode == 4
    assert complaint(result).startswith("The system bus cannot be reached (")


def test_a_daemon_that_ends_during_the_call_is_told_of(papertrail):
    papertrail.runtime.fault("SurfaceFlinger", "short", value=0, count=9)
    with tools.start("bramd-launcher", f"{PAPERTRAIL}.apk",
                     f"{PAPERTRAIL}/{MAIN_ACTIVITY}") as process:
        wait_for(lambda: looks(papertrail), "the wait for the window")
        papertrail.daemon.crash()
        _output, errors = process.communicate(timeout=tools.TIMEOUT_S)
    assert process.returncode == 4
    assert errors.startswith("bramd-launcher: bramd has ended before it answered.")


def test_a_file_that_is_not_there_is_told_of(papertrail):
    result = run_launcher("-d", "gone.pdf", f"{PAPERTRAIL}.apk", f"{PAPERTRAIL}/{VIEW_ACTIVITY}",
                          cwd=HOME)
    assert result.returncode == 1
    assert complaint(result) == (f"There is no file “{HOME}/gone.pdf”. Look at its spelling, and "
                                 "whether it was moved or deleted.")
    assert not started_intents(papertrail)


@pytest.mark.parametrize(("words", "sentence"), [
    ((), "PACKAGE.apk and PACKAGE/CLASS are needed."),
    (("a.b.apk", "a.c/Main"), "“a.b.apk” and “a.c/Main” name different packages."),
])
def test_a_command_line_without_sense_is_told_of(words, sentence):
    result = run_launcher(*words)
    assert result.returncode == 2
    assert complaint(result) == f"{sentence} See “bramd-launcher --help”."


def test_it_tells_what_it_is():
    helped, version = run_launcher("--help"), run_launcher("--version")
    assert (helped.returncode, helped.stderr) == (version.returncode, version.stderr) == (0, "")
    assert helped.stdout.startswith("Usage: bramd-launcher PACKAGE.apk PACKAGE/CLASS\n")
    cmake = (Path(os.environ["BRAMD_BUILD_DIR"]) / "CMakeCache.txt").read_text(encoding="utf-8")
    number = next(line.split("=")[1] for line in cmake.splitlines()
                  if line.startswith("CMAKE_PROJECT_VERSION:"))
    assert version.stdout == f"bramd-launcher {number}\n"
