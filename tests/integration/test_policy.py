"""Who may install and remove: privileged callers always, others when the device policy allows."""

import re

import pytest

from phone.namespace import PRIVILEGED_GROUP_ID, USER_ID
from phone.waiting import wait_for

from conditions import needs_other_users
from daemonsteps import DAEMON, start_beside_runtime
from hostfiles import download, traces
from packagerequests import installs, removals, removed_packages
from texts import ENGLISH, catalogue

DISK_GROUP_ID = 6

pytestmark = [needs_other_users, pytest.mark.phone(services=["notifications", "accounts"])]


@pytest.fixture(autouse=True)
def running(phone):
    start_beside_runtime(phone)


def expect_refusal(phone, what, text_id):
    phone.daemon.log.expect(f"APK {what} prohibited", "critical", DAEMON)
    notice = phone.notifications.wait_for_notice()
    assert len(phone.notifications.notices()) == 1
    assert notice["body"] == ENGLISH[text_id]
    assert notice["summary"] == ""
    assert notice["application"] == ""
    assert notice["icon"] == ""
    assert notice["hints"]["image-path"] == "icon-lock-warning"
    assert notice["hints"]["urgency"] == 2
    assert notice["hints"]["transient"] is True


def test_a_user_whose_policy_forbids_it_cannot_install(phone):
    phone.accounts.allow_installation(False)
    assert phone.call_as("installFile", download("weather")) is False
    expect_refusal(phone, "installation", "bramd-app_installation_disallowed")
    assert not installs(phone.runtime)


@pytest.mark.parametrize("method", ["installPreloadFile", "installPartnerSpaceFile"])
def test_the_policy_holds_for_every_way_to_install(phone, method):
    phone.accounts.allow_installation(False)
    assert phone.call_as(method, download("weather")) is False
    expect_refusal(phone, "installation", "bramd-app_installation_disallowed")


def test_a_user_whose_policy_forbids_it_cannot_remove(phone):
    phone.accounts.allow_installation(False)
    assert phone.call_as("removeFile", "org.example.weather") is False
    expect_refusal(phone, "uninstallation", "bramd-app_uninstallation_disallowed")
    assert not removals(phone.runtime)


def test_a_user_whose_policy_allows_it_can_install_and_remove(phone):
    phone.accounts.allow_installation(True)
    assert phone.call_as("installFile", download("weather")) is True
    wait_for(traces, "the app's files")
    assert phone.call_as("removeFile", "org.example.weather") is True
    assert removed_packages(phone.runtime) == ["org.example.weather"]


def test_without_parental_controls_everybody_may_install(phone):
    phone.accounts.remove_filter()
    assert phone.call_as("installFile", download("weather")) is True


@pytest.mark.phone(services=["notifications"])
def test_without_an_accounts_service_everybody_may_install(phone):
    assert phone.call_as("installFile", download("weather")) is True


@pytest.mark.parametrize("identity", [
    pytest.param({"uid": 0, "gid": 0}, id="root"),
    pytest.param({"gid": PRIVILEGED_GROUP_ID}, id="group privileged"),
    pytest.param({"gid": DISK_GROUP_ID}, id="group disk"),
])
def test_privileged_callers_are_never_subject_to_the_policy(phone, identity):
    phone.accounts.allow_installation(False)
    assert phone.call_as("installFile", download("weather"), **identity) is True
    assert phone.call_as("removeFile", "org.example.weather", **identity) is True


def test_a_supplementary_group_does_not_count(phone):
    phone.accounts.allow_installation(False)
    assert phone.call_as("installFile", download("weather"), groups=[DISK_GROUP_ID]) is False
    expect_refusal(phone, "installation", "bramd-app_installation_disallowed")


def test_an_accounts_service_that_fails_forbids_with_a_warning(phone):
    phone.accounts.allow_installation(True)
    phone.accounts.set_mode("fail")
    assert phone.call_as("installFile", download("weather")) is False
    assert len(claim_policy_warning(phone)) == 1
    expect_refusal(phone, "installation", "bramd-app_installation_disallowed")


def test_an_accounts_service_that_hangs_forbids_after_a_while(phone):
    phone.accounts.allow_installation(True)
    phone.accounts.set_mode("hang")
    assert phone.call_as("installFile", download("weather")) is False
    assert len(claim_policy_warning(phone)) == 1
    expect_refusal(phone, "installation", "bramd-app_installation_disallowed")


def claim_policy_warning(phone):
    records = [record for record in phone.daemon.log.records if record.level == "warning"]
    for record in records:
        assert re.search("polic|install", record.text, re.IGNORECASE), record
        record.claimed = True
    return records


def test_the_refusal_is_in_the_users_language(phone):
    phone.stop_daemon()
    phone.start_daemon({"LC_ALL": "de_DE.UTF-8", "LANGUAGE": "de"})
    phone.accounts.allow_installation(False)
    assert phone.call_as("installFile", download("weather"), uid=USER_ID) is False
    notice = phone.notifications.wait_for_notice()
    assert notice["body"] == catalogue("bramd-de")["bramd-app_installation_disallowed"]
    phone.daemon.log.expect("APK installation prohibited", "critical", DAEMON)
