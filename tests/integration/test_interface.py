"""The published interface, method by method, and what systemd is asked for."""

import re
from pathlib import Path

import pytest

from gi.repository import Gio

from phone.waiting import wait_for

from daemonsteps import BINDER, CONFIG, forgive_deaths, start_runtime
from parcels import string16

DATA = Path(__file__).resolve().parents[2] / "data" / "com.corvo.bramd.xml"

METHODS = {
    "installFile": ("s filename", "b success"),
    "installPreloadFile": ("s filename", "b success"),
    "installPartnerSpaceFile": ("s filename", "b success"),
    "removeFile": ("s filename", "b success"),
    "getAndroidAppDataUsage": ("", "t bytes"),
    "controlService": ("b start", ""),
    "controlServiceAutostart": ("b enable", ""),
    "isRunning": ("", "b running"),
    "notifyRuntimeUpgrade": ("b upgrading", ""),
    "getAppStartOnBootup": ("s packageName", "b autoStartAllowed"),
    "setAppStartOnBootup": ("s packageName, b autoStartAllowed", ""),
    "deleteAppCacheFiles": ("s packageName", ""),
    "clearAppUserData": ("s packageName", ""),
    "forceStopApp": ("s packageName", ""),
    "getAppSize": ("s packageName", "(xxx) stats"),
    "openAppSettings": ("s packageName", ""),
    "viewLicenses": ("", ""),
    "launchApp": ("s packageName", ""),
    "launchIntent": ("s action, s data, s type, s packageName, s className, s category, "
                     "a{sv} extras", ""),
    "getAndroidVersionData": ("", "(iss) versionData"),
    "share": ("a{sv} shareActionConfiguration", ""),
}

SIGNALS = {
    "installPackage": "s filename",
    "uninstallPackage": "s filename",
    "installPackageFromRPM": "s filename",
    "uninstallPackageFromRPM": "s filename",
    "appStartOnBootupChanged": "s packageName, b autoStartAllowed",
    "appClosed": "s appName",
}


def arguments(infos):
    return ", ".join(f"{info.signature} {info.name}" for info in infos)


def methods(interface):
    return {method.name: (arguments(method.in_args), arguments(method.out_args))
            for method in interface.methods}


def signals(interface):
    return {signal.name: arguments(signal.args) for signal in interface.signals}


def parse(xml):
    interface = Gio.DBusNodeInfo.new_for_xml(xml).lookup_interface("com.corvo.bramd")
    assert interface, xml
    return interface


def unit_calls(phone, *names):
    return [call for call in phone.unit.calls() if call[0] in names]


def test_the_introspection_data_is_the_whole_interface(bramd):
    interface = parse(bramd.introspection())
    assert methods(interface) == METHODS
    assert signals(interface) == SIGNALS
    assert not interface.properties


def test_the_data_file_says_the_same(bramd):
    published, filed = parse(bramd.introspection()), parse(DATA.read_text(encoding="utf-8"))
    assert methods(published) == methods(filed)
    assert signals(published) == signals(filed)


@pytest.mark.parametrize("sdk, release", [
    pytest.param(27, "8.1.0", marks=pytest.mark.phone(sdk=27)),
    pytest.param(28, "9", marks=pytest.mark.phone(sdk=28)),
    pytest.param(29, "10", marks=pytest.mark.phone(sdk=29)),
    pytest.param(30, "11", marks=pytest.mark.phone(sdk=30)),
])
def test_the_runtimes_version_comes_from_its_build_properties(bramd, sdk, release):
    assert bramd.call("getAndroidVersionData") == (sdk, release, "2021-05-05")


def test_a_runtime_installed_later_has_its_version_known_then(phone):
    phone.runtime.uninstall()
    log = phone.start_daemon().log
    since = log.mark()
    assert phone.bramd.call("getAndroidVersionData") == (0, "", "")
    line = re.compile(r'Cannot find sdk version in "?/opt/umbra/"? build properties')
    assert log.claim_all(line, "critical", CONFIG) >= 1
    assert log.count(line, since) >= 1
    phone.runtime.install()
    assert phone.bramd.call("getAndroidVersionData") == (28, "9", "2021-05-05")


@pytest.mark.parametrize("method, signature, values, default", [
    ("getAppStartOnBootup", "s", ["a.b"], False),
    ("setAppStartOnBootup", "sb", ["a.b", True], None),
    ("deleteAppCacheFiles", "s", ["a.b"], None),
    ("clearAppUserData", "s", ["a.b"], None),
    ("forceStopApp", "s", ["a.b"], None),
    ("getAppSize", "s", ["a.b"], (0, 0, 0)),
])
def test_without_a_runtime_a_method_answers_its_default(phone, bramd, method, signature, values,
                                                        default):
    assert bramd.call(method, signature, *values) == default
    phone.daemon.log.claim_all("Could not create storagestats transaction", "critical", BINDER)


def test_whether_the_runtime_runs_is_never_known(phone, bramd):
    phone.start_runtime()
    assert bramd.call("isRunning") is False
    phone.daemon.log.expect(re.compile(r"QMetaObject::invokeMethod: No such method .*isRunning.*"),
                            "warning", "default")


def test_the_unit_is_started_and_stopped_on_request(phone, bramd):
    bramd.call("controlService", "b", True)
    phone.unit.wait_for_state("active")
    since = phone.daemon.log.mark()
    bramd.call("controlService", "b", False)
    phone.unit.wait_for_state("inactive")
    forgive_deaths(phone, since)
    assert unit_calls(phone, "StartUnit", "StopUnit") == [
        ("StartUnit", ["umbravm.service", "replace"]),
        ("StopUnit", ["umbravm.service", "replace"])]


def test_a_state_that_is_there_already_is_not_asked_for(phone, bramd):
    bramd.call("controlService", "b", False)
    phone.unit.hold_activation(True)
    bramd.call("controlService", "b", True)
    phone.daemon.log.expect('Umbra VM is "activating" ( "start" )')
    bramd.call("controlService", "b", True)
    assert unit_calls(phone, "StartUnit", "StopUnit") == [
        ("StartUnit", ["umbravm.service", "replace"])]
    bramd.call("controlService", "b", False)
    wait_for(lambda: unit_calls(phone, "StopUnit"), "the stop of a starting unit")


def test_a_failed_unit_is_neither_skipped_for_start_nor_for_stop(phone, bramd):
    phone.unit.show("failed", "failed")
    phone.daemon.log.expect('Umbra VM is "failed" ( "failed" )')
    bramd.call("controlService", "b", False)
    wait_for(lambda: unit_calls(phone, "StopUnit"), "StopUnit")
    phone.unit.show("failed", "failed")
    bramd.call("controlService", "b", True)
    wait_for(lambda: unit_calls(phone, "StartUnit"), "StartUnit")


def test_the_unit_is_enabled_and_disabled_on_request(phone, bramd):
    bramd.call("controlServiceAutostart", "b", True)
    bramd.call("controlServiceAutostart", "b", False)
    wait_for(lambda: len(unit_calls(phone, "EnableUnitFiles", "DisableUnitFiles")) == 2,
             "both calls")
    assert unit_calls(phone, "EnableUnitFiles", "DisableUnitFiles") == [
        ("EnableUnitFiles", [["umbravm.service"], False, True]),
        ("DisableUnitFiles", [["umbravm.service"], False])]


def test_systemd_is_asked_to_send_its_signals_first(phone, bramd):
    assert unit_calls(phone, "Subscribe", "LoadUnit") == [
        ("Subscribe", []), ("LoadUnit", ["umbravm.service"])]


def test_an_app_that_closed_is_announced(phone, bramd):
    closed = bramd.collect_signal("appClosed")
    start_runtime(phone)
    # Set with the connection, so that the runtime can call it.
    phone.runtime.wait_for_transaction("umbra", 15)
    for name in ("org.example.closed", ""):
        phone.runtime.call_observer("listener", 1, string16(name))
    wait_for(lambda: len(closed) == 2, "both signals")
    assert closed == [("org.example.closed",), ("",)]
    phone.runtime.call_observer("listener", 2, string16("org.example.other"))
    phone.runtime.call_observer("listener", 1, string16("org.example.last"))
    wait_for(lambda: len(closed) == 3, "the last signal")
    assert closed[-1] == ("org.example.last",)
