"""Sharing from the host into an app of the runtime."""

import itertools
import re

import pytest

from gi.repository import GLib

from phone.namespace import USER

from daemonsteps import DAEMON, start_beside_runtime
from launches import (ADDRESSES, EVERY_LEVEL, WEATHER, check_level_complaints, looks,
                      start_with_weather, started_intents)

SEND = "android.intent.action.SEND"
SEND_MULTIPLE = "android.intent.action.SEND_MULTIPLE"
SUBJECT = "android.intent.extra.SUBJECT"
TEXT = "android.intent.extra.TEXT"
STREAM = "android.intent.extra.STREAM"

ACTIVITY = f"{WEATHER}.ShareActivity"
TARGET = {"package": WEATHER, "componentPackage": WEATHER, "componentClass": ACTIVITY}
FIRST, SECOND = (f"/home/{USER}/Pictures/{name}.jpg" for name in ("first", "second"))


def share(phone, mime_type, resources, method_id=f"{WEATHER}/{ACTIVITY}", **more):
    """Sends a configuration as the sharing framework does."""
    method = GLib.Variant("a{sv}", {"methodId": GLib.Variant("s", method_id)})
    configuration = {"mimeType": GLib.Variant("s", mime_type), "selectedTransferMethodInfo": method,
                     **more}
    if resources is not None:
        configuration["resources"] = resources
    phone.bramd.call("share", "a{sv}", configuration)


def files(*paths):
    return GLib.Variant("as", paths)


def text_item(**entries):
    item = {key: GLib.Variant("s", value) for key, value in entries.items()}
    return GLib.Variant("av", [GLib.Variant("a{sv}", item)])


def stream_of(phone):
    return started_intents(phone)[-1]["extras"][STREAM]


def is_mapped(url, name):
    return url.startswith("file:///storage/") and url.endswith(f"/Pictures/{name}.jpg")


@pytest.mark.parametrize("sdk", EVERY_LEVEL)
def test_one_file_is_sent(phone, sdk):
    del sdk
    start_with_weather(phone)
    share(phone, "image/jpeg", files(FIRST))
    url = stream_of(phone)
    assert started_intents(phone) == [
        {"action": SEND, "type": "image/jpeg", "extras": {STREAM: url}, **TARGET}]
    assert is_mapped(url, "first")
    assert looks(phone) == [WEATHER]
    check_level_complaints(phone, 1)


@pytest.mark.parametrize("sdk", EVERY_LEVEL)
def test_two_files_are_sent_in_order(phone, sdk):
    del sdk
    start_with_weather(phone)
    share(phone, "image/jpeg", files(SECOND, FIRST))
    urls = stream_of(phone)
    assert started_intents(phone) == [
        {"action": SEND_MULTIPLE, "type": "image/jpeg", "extras": {STREAM: urls}, **TARGET}]
    assert len(urls) == 2
    assert is_mapped(urls[0], "second")
    assert is_mapped(urls[1], "first")
    check_level_complaints(phone, 1)


def test_files_are_shared_by_the_runtimes_addresses(phone):
    start_beside_runtime(phone)
    for path, address in ADDRESSES.items():
        share(phone, "image/jpeg", files(path))
        assert (path, stream_of(phone)) == (path, address)
    share(phone, "image/jpeg", files(*ADDRESSES))
    assert stream_of(phone) == list(ADDRESSES.values())


def test_text_is_sent_only_with_a_subject(phone):
    start_with_weather(phone)
    keys = ("name", "linkTitle", "data", "status")
    for present in itertools.product((False, True), repeat=len(keys)):
        item = {key: f"the {key}" for key, there in zip(keys, present) if there}
        expected = {}
        subject = item.get("name") or item.get("linkTitle")
        if subject:
            expected = {SUBJECT: subject, TEXT: item.get("data") or item.get("status")}
        share(phone, "text/x-url", text_item(**item))
        intent = started_intents(phone)[-1]
        extras = intent.pop("extras", {})
        assert (item, extras) == (item, expected)
        assert intent == {"action": SEND, "type": "text/plain", **TARGET}
    assert len(started_intents(phone)) == 16


def test_an_empty_name_gives_way_to_the_link_title(phone):
    start_with_weather(phone)
    share(phone, "text/plain", text_item(name="", linkTitle="A link", data="", status="its text"))
    assert started_intents(phone)[0]["extras"] == {SUBJECT: "A link", TEXT: "its text"}


def test_nested_lists_of_maps_are_read(phone):
    start_with_weather(phone)
    item = {"name": GLib.Variant("s", "Note"), "data": GLib.Variant("s", "Text")}
    share(phone, "text/plain", GLib.Variant("aa{sv}", [item]))
    assert started_intents(phone)[0]["extras"] == {SUBJECT: "Note", TEXT: "Text"}


def test_an_unknown_key_is_logged_and_the_rest_is_shared(phone):
    start_with_weather(phone)
    share(phone, "image/jpeg", files(FIRST), colour=GLib.Variant("s", "red"),
          title=GLib.Variant("s", "Holiday"))
    phone.daemon.log.expect(re.compile(r"Unrecognized key ' \"colour\" ' with value: .*red.*"),
                            "warning", DAEMON)
    phone.daemon.log.expect('Title: "Holiday"', "debug", DAEMON)
    phone.daemon.log.expect(f'Resources: "{FIRST}"', "debug", DAEMON)
    assert len(started_intents(phone)) == 1


@pytest.mark.parametrize("resources", [None, files()])
def test_nothing_is_shared_without_resources(phone, resources):
    start_beside_runtime(phone)
    share(phone, "image/jpeg", resources)
    assert not started_intents(phone)


@pytest.mark.parametrize("method_id", ["no-component", "", "/org.example.weather.Main"])
def test_a_method_that_names_no_component_is_shared_without_a_target(phone, method_id):
    start_beside_runtime(phone)
    share(phone, "image/jpeg", files(FIRST), method_id=method_id)
    phone.daemon.log.expect(
        f'Sharing with no app in particular, methodId names none: "{method_id}"',
        "warning", DAEMON)
    assert started_intents(phone) == [
        {"action": SEND, "type": "image/jpeg", "extras": {STREAM: stream_of(phone)}}]
    assert not looks(phone)
