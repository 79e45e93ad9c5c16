"""Steps that many tests take with the daemon."""

import re

from phone.waiting import wait_for

from hostfiles import INCOMING

BINDER = "com.corvo.bramd.binder"
DAEMON = "com.corvo.bramd.daemon"
LAUNCHER = "com.corvo.bramd.launcher"
SERVICE = "com.corvo.bramd.service"
CONFIG = "com.corvo.bramd.config"

PERSISTENT_CLIENTS = ("package", "activity", "alarm", "umbra")


ANNOUNCED = "Launchers complete. Removing orphans"

# Of every service that the daemon holds when the runtime dies.
DIED = re.compile(r"\S+ died! Trying to reconnect\.")


def connected_line(service):
    return f"Connected to Umbra Service {service}"


def start_beside_runtime(phone, environment=None):
    """Starts the runtime and then the daemon, and waits until each holds what it needs of the
    other. That is faster than the other way round: nobody has to look again for what is late."""
    phone.start_runtime()
    phone.start_daemon(environment)
    wait_until_connected(phone)
    wait_until_announced(phone)
    phone.unit.forget()


def wait_until_connected(phone, since=0, services=PERSISTENT_CLIENTS):
    """Until the daemon holds these services of the runtime."""
    for service in services:
        wait_for(lambda name=service: phone.daemon.log.count(connected_line(name), since),
                 lambda name=service: f"{name}; logged was:\n{phone.daemon.log.tail(since)}", 20)


def start_runtime(phone, **arguments):
    """Starts the unit and waits until the daemon holds the runtime's services and the runtime has
    announced its apps."""
    since = phone.daemon.log.mark()
    phone.start_runtime(**arguments)
    wait_until_connected(phone, since)
    wait_until_announced(phone, since)


def expect_deaths(phone, since):
    """Each held service that dies is one warning."""
    wait_for(lambda: phone.daemon.log.count(DIED, since) >= len(PERSISTENT_CLIENTS),
             "the deaths of all held services")
    phone.daemon.log.claim_all(DIED, "warning", BINDER, since)


def forgive_deaths(phone, since=0):
    """A runtime that stops in order may be gone before the daemon has read that it is stopping. A
    daemon that was there before the runtime has logged the same state before: since says when."""
    phone.daemon.log.expect('Umbra VM is "inactive" ( "dead" )', since=since)
    phone.daemon.log.claim_all(DIED, "warning", BINDER)


def wait_until_announced(phone, since=0, count=1):
    """Until the runtime has said so often that all its launchers are known."""
    wait_for(lambda: phone.daemon.log.count(ANNOUNCED, since) >= count,
             lambda: f"a complete announcement; logged was:\n{phone.daemon.log.tail(since)}", 20)


def staged_path_in_runtime(path):
    return "/" + str((INCOMING / path.name).relative_to("/home/.android"))


def request_of(apk, install=True):
    """A pattern for the way a request is logged."""
    return re.compile(f".*{re.escape(str(apk))}.*{'true' if install else 'false'}.*")


def claim_missing_settings_entries(phone, since=0):
    """A deletion that finds no file is logged, and handlers never had a settings entry."""
    return phone.daemon.log.claim_all(
        re.compile(r'Could not remove: "/usr/share/corvo-settings/entries/bramd_handler_.*"'),
        "warning", LAUNCHER, since)
