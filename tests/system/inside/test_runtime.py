"""The runtime's life, seen and steered by the daemon through systemd and the kernel's driver."""

from phone.waiting import wait_for

from hostfiles import entries
from realphone import PATIENCE_S, RUNTIME_UNIT, run, show, systemctl
from steps import install, start_runtime, wait_for_entries, wait_until_connected


def test_it_is_started_and_stopped_on_request(phone):
    since = phone.daemon.log.mark()
    phone.bramd.call("controlService", "b", True)
    phone.unit.wait_for_state("active", PATIENCE_S)
    wait_until_connected(phone, since)
    phone.bramd.call("controlService", "b", False)
    phone.unit.wait_for_state("inactive", PATIENCE_S)
    assert show(RUNTIME_UNIT, "Result") == "success"


def test_apps_are_back_after_it_is_started_anew(phone):
    start_runtime(phone)
    install(phone, "weather")
    wait_for_entries(1)
    before, since = entries(), phone.daemon.log.mark()
    systemctl("restart", RUNTIME_UNIT)
    wait_until_connected(phone, since)
    assert entries() == before


def test_apps_are_back_after_its_processes_were_killed(phone):
    start_runtime(phone)
    install(phone, "weather")
    wait_for_entries(1)
    before = entries()
    systemctl("kill", "--kill-whom=all", "--signal=KILL", RUNTIME_UNIT)
    phone.unit.wait_for_state("failed", PATIENCE_S)
    # A failed unit is nothing that a request starts; the owner of the phone does.
    since = phone.daemon.log.mark()
    phone.bramd.call("controlService", "b", True)
    wait_until_connected(phone, since)
    assert entries() == before


def test_its_start_at_boot_is_switched(phone):
    for wanted, told in ((True, "enabled"), (False, "disabled")):
        phone.bramd.call("controlServiceAutostart", "b", wanted)
        wait_for(lambda state=told:
                 run("systemctl", "is-enabled", RUNTIME_UNIT, check=False).stdout.strip() == state,
                 told, PATIENCE_S)


def test_it_follows_the_hosts_time_zone(phone):
    start_runtime(phone)
    told = phone.runtime.control("state")["timezone"]
    assert told == run("timedatectl", "show", "--property=Timezone", "--value").stdout.strip()
    for zone in ("Asia/Kathmandu", "Europe/Helsinki"):
        phone.timedate.set_zone(zone)
        wait_for(lambda name=zone: phone.runtime.control("state")["timezone"] == name, zone,
                 PATIENCE_S)
