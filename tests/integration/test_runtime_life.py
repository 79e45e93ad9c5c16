"""The runtime comes, goes, dies and misbehaves; the daemon lives on and catches up."""

import pytest

from phone.waiting import wait_for

from daemonsteps import (ANNOUNCED, BINDER, DIED, SERVICE, connected_line, expect_deaths,
                         forgive_deaths, start_beside_runtime, start_runtime,
                         wait_until_announced, wait_until_connected)
from hostfiles import APPLICATIONS, download, entries, read_entry, traces
from launches import LAUNCH_PACKAGE, START_ACTIVITY, launched_packages, started_intents
from packagerequests import (check_removal, install_paths, installs, removals,
                             removed_packages)
from parcels import ADD_LAUNCHER, COMPLETE, int32, launcher, string16
from texts import ENGLISH

WEATHER = "org.example.weather"
STAGED_WEATHER = "/data/xrs-staging/app/incoming/weather.apk"
NO_DEVICE = "Unable to find Umbra service manager for umbra.launcher"
STAGED_PAPERTRAIL = "/data/xrs-staging/app/incoming/papertrail.apk"


@pytest.fixture(name="running")
def running_fixture(phone):
    start_beside_runtime(phone)


def install(phone, name="weather"):
    assert phone.bramd.call("installFile", "s", str(download(name))) is True


def wait_until_it_works(phone, since):
    """The runtime is held again, and an app can be installed."""
    wait_until_connected(phone, since)
    phone.notifications.forget()
    phone.runtime.forget()
    install(phone, "papertrail")
    phone.notifications.wait_for_notice()
    assert install_paths(phone.runtime) == [STAGED_PAPERTRAIL]


def test_a_stopped_runtime_is_let_go_and_held_again(phone, running):
    del running
    phone.stop_runtime()
    forgive_deaths(phone)
    since = phone.daemon.log.mark()
    start_runtime(phone)
    wait_until_it_works(phone, since)


def test_an_app_that_goes_while_the_runtime_starts_leaves_the_host(phone, running):
    """Before it has announced its apps, the runtime tells nobody of removals either."""
    del running
    install(phone)
    wait_for(entries, "the desktop entry")
    phone.stop_runtime()
    forgive_deaths(phone)
    assert phone.bramd.call("removeFile", "s", WEATHER) is True
    wait_for(lambda: not traces(), lambda: f"the end of {traces()}", 20)


def test_what_comes_from_a_runtime_after_its_end_is_forgotten_with_it(phone, running):
    """An announcement can be on its way when the runtime dies, and so can the end of them all."""
    del running
    wait_until_announced(phone)
    phone.unit.show("failed", "failed")
    phone.daemon.log.expect('Umbra VM is "failed" ( "failed" )')
    data = launcher("org.example.late", "late.Main", "Late")
    before = entries()
    assert phone.runtime.call_launcher(ADD_LAUNCHER, data) == (0, b"")
    assert phone.runtime.call_launcher(COMPLETE) == (0, b"")
    assert len(entries()) == len(before) + 1 and set(before) < set(entries())

    phone.unit.show("activating", "start")
    phone.daemon.log.expect('Umbra VM is "activating" ( "start" )')
    data = launcher("org.example.next", "next.Main", "Next")
    assert phone.runtime.call_launcher(ADD_LAUNCHER, data) == (0, b"")
    since = phone.daemon.log.mark()
    phone.unit.show("active", "running")
    phone.daemon.log.expect('Umbra VM is "active" ( "running" )', since=since)
    assert phone.runtime.call_launcher(COMPLETE) == (0, b"")

    assert [read_entry(APPLICATIONS / name)["Name"] for name in entries()] == ["Next"]


def test_everything_is_let_go_when_the_unit_begins_to_stop(phone, running):
    del running
    log = phone.daemon.log
    assert phone.runtime.call_launcher(COMPLETE) == (0, b"")
    phone.unit.show("deactivating", "stop")
    log.expect('Umbra VM is "deactivating" ( "stop" )')
    since = log.mark()
    status, _reply = phone.runtime.call_launcher(COMPLETE)
    assert status != 0
    assert not log.count(ANNOUNCED, since)
    install(phone)
    assert not installs(phone.runtime)

    phone.unit.show("activating", "start")
    phone.unit.show("active", "running")

    wait_until_connected(phone, since)
    wait_until_announced(phone, since)
    phone.notifications.wait_for_notice()
    assert install_paths(phone.runtime) == [STAGED_WEATHER]


def test_a_stopped_runtime_is_started_by_a_request(phone, running):
    del running
    phone.stop_runtime()
    forgive_deaths(phone)
    since = phone.daemon.log.mark()
    install(phone)
    wait_until_connected(phone, since)
    phone.notifications.wait_for_notice()
    wait_for(entries, "the desktop entry")


def test_a_killed_runtime_is_held_again(phone, running):
    del running
    since = phone.daemon.log.mark()
    phone.unit.kill_runtime()
    phone.unit.wait_for_state("failed")
    expect_deaths(phone, since)
    since = phone.daemon.log.mark()
    start_runtime(phone)
    wait_until_it_works(phone, since)


def test_a_runtime_that_restarts_inside_its_unit_is_held_again(phone, running):
    del running
    install(phone)
    phone.notifications.wait_for_notice()
    wait_for(entries, "the desktop entry")
    before = traces()
    since = phone.daemon.log.mark()
    phone.runtime.restart()
    expect_deaths(phone, since)
    wait_until_announced(phone, since)
    assert traces() == before
    wait_until_it_works(phone, since)


def test_exactly_one_listener_is_set_per_connection(phone, running):
    del running
    phone.runtime.wait_for_transaction("umbra", 15)
    assert len(phone.runtime.transactions("umbra", 15)) == 1
    since = phone.daemon.log.mark()
    phone.runtime.restart()
    expect_deaths(phone, since)
    wait_until_connected(phone, since)
    phone.runtime.wait_for_transaction("umbra", 15, 2)
    install(phone)
    phone.notifications.wait_for_notice()
    assert len(phone.runtime.transactions("umbra", 15)) == 2


@pytest.mark.parametrize("first, second", [("package", "umbra"), ("umbra", "package")])
def test_services_may_come_up_in_any_order(phone, bramd, first, second):
    del bramd
    phone.start_runtime(hold=["package", "umbra"])
    log = phone.daemon.log
    for name in (first, second):
        log.expect(f"Could not find remote object for {name}", "debug", BINDER)
    install(phone)
    phone.runtime.release(first)
    log.expect(connected_line(first), "debug", BINDER)
    assert not installs(phone.runtime)
    phone.runtime.release(second)
    phone.notifications.wait_for_notice()
    assert install_paths(phone.runtime) == [STAGED_WEATHER]
    wait_for(entries, "the desktop entry")


@pytest.mark.phone(device=False)
def test_a_device_that_appears_late(phone, bramd):
    del bramd
    log = phone.daemon.log
    phone.unit.show("activating", "start")
    log.expect(NO_DEVICE, "warning", SERVICE)
    phone.unit.show("active", "running")
    log.expect(NO_DEVICE, "warning", SERVICE)
    for name in ("package", "activity", "storagestats", "alarm", "deviceidle", "umbra"):
        log.expect(f"Could not get service manager for {name}", "critical", BINDER)
    phone.unit.show("inactive", "dead")
    phone.add_device()
    since = log.mark()
    start_runtime(phone)
    wait_until_it_works(phone, since)


@pytest.mark.phone(device=False)
def test_a_device_that_appears_while_the_unit_starts(phone, bramd):
    del bramd
    phone.unit.show("activating", "start")
    phone.daemon.log.expect(NO_DEVICE, "warning", SERVICE)
    phone.add_device()
    start_runtime(phone)
    wait_until_it_works(phone, 0)


def test_a_daemon_started_late_catches_up(phone):
    phone.start_runtime()
    log = phone.start_daemon().log
    log.expect('Umbra VM is "active" ( "running" )', "debug", SERVICE)
    wait_until_connected(phone)
    wait_until_announced(phone)
    phone.runtime.call_launcher(ADD_LAUNCHER, launcher("a.b", "a.Main", "Name"))
    assert entries()


def test_a_daemon_killed_in_the_middle_is_replaced(phone, running):
    del running
    install(phone)
    phone.notifications.wait_for_notice()
    wait_for(entries, "the desktop entry")
    before = traces()
    phone.daemon.crash()
    phone.system_bus.wait_until_ownerless("com.corvo.bramd")
    phone.start_daemon()
    wait_until_connected(phone)
    wait_until_announced(phone)
    assert traces() == before
    wait_until_it_works(phone, 0)


class TestRefusedAndShortAnswers:
    """A request that goes wrong inside the runtime is lost, the next one is not."""

    @pytest.mark.parametrize("kind", ["refuse", "short", "status"])
    def test_an_install_call_that_goes_wrong(self, phone, running, kind):
        del running
        phone.runtime.fault("umbra", kind, code=2, value=-1 if kind == "status" else None, count=1)
        install(phone)
        phone.runtime.wait_for_transaction("umbra", 2)
        wait_until_it_works(phone, 0)

    @pytest.mark.parametrize("kind", ["refuse", "short", "status"])
    def test_a_removal_call_that_goes_wrong(self, phone, running, kind):
        del running
        phone.runtime.fault("package", kind, code=63, value=-1 if kind == "status" else None,
                            count=1)
        assert phone.bramd.call("removeFile", "s", WEATHER) is True
        check_removal(phone.runtime, WEATHER)
        wait_until_it_works(phone, 0)

    @pytest.mark.parametrize("service, code", [("umbra", 2), ("package", 63)])
    def test_a_runtime_that_dies_while_it_is_called(self, phone, running, service, code):
        del running
        since = phone.daemon.log.mark()
        phone.runtime.fault(service, "die", code=code)
        if service == "umbra":
            install(phone)
        else:
            assert phone.bramd.call("removeFile", "s", WEATHER) is True
        phone.unit.wait_for_state("failed")
        expect_deaths(phone, since)
        since = phone.daemon.log.mark()
        start_runtime(phone)
        wait_until_it_works(phone, since)

    def test_a_hanging_call_ends_with_the_runtime(self, phone, running):
        del running
        phone.runtime.fault("umbra", "hang", code=2)
        since = phone.daemon.log.mark()
        answer = phone.bramd.start_call("installFile", "s", str(download("weather")))
        phone.runtime.wait_for_transaction("umbra", 2)
        assert not answer
        phone.unit.kill_runtime()
        wait_for(lambda: answer == [True], "the answer to installFile")
        phone.unit.wait_for_state("failed")
        expect_deaths(phone, since)
        since = phone.daemon.log.mark()
        start_runtime(phone)
        wait_until_it_works(phone, since)

    def test_a_listener_that_is_refused_is_reported(self, phone, running):
        del running
        phone.runtime.fault("umbra", "status", code=15, value=-1, count=1)
        since = phone.daemon.log.mark()
        phone.runtime.restart()
        expect_deaths(phone, since)
        phone.daemon.log.expect("Failed to set listener for umbra service", "critical", "default")


class TestObservers:
    """Results as the runtime reports them, through the objects the daemon handed over."""

    @pytest.fixture(autouse=True)
    def observed(self, phone, running):
        """An install whose observer the runtime holds, and whose own result is over."""
        del running
        install(phone)
        phone.notifications.wait_for_notice()
        wait_for(entries, "the desktop entry")
        phone.notifications.forget()

    @pytest.mark.parametrize("code, text_id", [
        (-115, "Aborted"), (-21, "Aborted"), (-12, "bramd-install-fail-incompat"),
        (-7, "bramd-install-fail-conflict"), (-2, "bramd-install-fail-invalid"),
        (-4, "bramd-install-fail-storage"), (-110, "bramd-install-fail-other"),
        (0, "bramd-install-fail-other"), (2, "bramd-install-fail-other"),
    ])
    def test_a_result_code_is_told_in_words(self, phone, code, text_id):
        phone.runtime.call_observer(
            "install", 2, string16("") + int32(code) + string16("") + int32(0))
        phone.daemon.log.expect(f'Package install result {code} for "" ( "" )', "debug", BINDER)
        notice = phone.notifications.wait_for_notice()
        assert notice["summary"] == ENGLISH["bramd-install-failed"]
        assert notice["body"] == ENGLISH[text_id]

    def test_the_runtimes_own_words_are_passed_on(self, phone):
        phone.runtime.call_observer(
            "install", 2, string16(WEATHER) + int32(-4) + string16("No room") + int32(0))
        notice = phone.notifications.wait_for_notice()
        assert notice["summary"] == f"{ENGLISH['bramd-install-failed']}: Weather"
        assert notice["body"] == "No room"

    def test_a_success_has_the_apps_name_and_no_body(self, phone):
        phone.runtime.call_observer(
            "install", 2, string16(WEATHER) + int32(1) + string16(None) + int32(0))
        notice = phone.notifications.wait_for_notice()
        assert notice["summary"] == f"{ENGLISH['bramd-install-success']}: Weather"
        assert notice["body"] == ""

    def test_extras_are_read_over(self, phone):
        empty_bundle = int32(4) + b"BNDL" + int32(0)
        phone.runtime.call_observer(
            "install", 2, string16(WEATHER) + int32(1) + string16("") + int32(1) + empty_bundle)
        assert phone.notifications.wait_for_notice()

    def test_a_user_action_is_a_failure(self, phone):
        phone.runtime.call_observer("install", 1)
        notice = phone.notifications.wait_for_notice()
        assert notice["summary"] == ENGLISH["bramd-install-failed"]
        assert notice["body"] == "Package installation failed"

    def test_an_unknown_call_is_a_warning(self, phone):
        phone.runtime.call_observer("install", 3)
        phone.daemon.log.expect("Unknown binder call ( 3 )", "warning", BINDER)
        assert not phone.notifications.notices()

    @pytest.mark.parametrize("data", [
        b"", int32(0x7fffffff), string16("a.b"), string16("a.b") + int32(1) + int32(0x7ffffff0),
        string16("a.b") + int32(1) + string16("m") + int32(1) + int32(0x7ffffff0) + b"BNDL"
        + int32(0x7fffffff),
    ], ids=lambda data: data[-16:].hex() or "nothing")
    def test_a_malformed_result_does_no_harm(self, phone, data):
        phone.runtime.call_observer("install", 2, data)
        phone.notifications.wait_for_notice()
        trouble = [record for record in phone.daemon.log.records
                   if record.level in ("warning", "critical")]
        assert len(trouble) <= 1, trouble
        for record in trouble:
            record.claimed = True
        phone.notifications.forget()
        phone.runtime.call_observer(
            "install", 2, string16(WEATHER) + int32(1) + string16("") + int32(0))
        assert phone.notifications.wait_for_notice()


def test_a_removal_waits_for_the_runtime_that_died(phone, running):
    del running
    phone.unit.kill_runtime()
    phone.unit.wait_for_state("failed")
    phone.daemon.log.expect('Umbra VM is "failed" ( "failed" )')
    # A failed unit is left alone; the request waits for whoever starts it.
    assert phone.bramd.call("removeFile", "s", WEATHER) is True
    assert phone.unit.state() == "failed"
    assert not removals(phone.runtime)
    phone.daemon.log.claim_all(DIED, "warning", BINDER)
    start_runtime(phone)
    check_removal(phone.runtime, WEATHER)


def ask_for_removal(phone, name):
    assert phone.bramd.call("removeFile", "s", name) is True


def ask_for_launch(phone, name):
    phone.bramd.call("launchApp", "s", name)


def ask_for_intent(phone, name):
    phone.bramd.call("launchIntent", "ssssssa{sv}", name, "", "", "", "", "", {})


def started_actions(phone):
    return [intent["action"] for intent in started_intents(phone)]


@pytest.mark.parametrize("service, code, ask, received", [
    ("package", 63, ask_for_removal, lambda phone: removed_packages(phone.runtime)),
    ("umbra", LAUNCH_PACKAGE, ask_for_launch, launched_packages),
    ("activity", START_ACTIVITY[28], ask_for_intent, started_actions),
], ids=["removals", "launches", "intents"])
def test_a_runtime_that_dies_takes_one_waiting_request_with_it(phone, bramd, service, code, ask,
                                                                 received):
    """What it can no longer be sent waits for the next one, and comes once."""
    del bramd
    names = ["org.example.first", "org.example.second", "org.example.third"]
    phone.start_runtime(hold=[service])
    phone.daemon.log.expect(f"Could not find remote object for {service}", "debug", BINDER)
    for name in names:
        ask(phone, name)
    phone.runtime.fault(service, "die", code=code)
    since = phone.daemon.log.mark()
    phone.runtime.release(service)
    phone.unit.wait_for_state("failed")
    wait_for(lambda: any(text.startswith("The runtime is gone, keeping")
                         for text in phone.daemon.log.texts(since)), "the refusal of the second")
    assert received(phone) == names[:1]

    expect_deaths(phone, since)
    start_runtime(phone)
    wait_for(lambda: len(received(phone)) == len(names), "the other requests")
    assert received(phone) == names
