"""What the host's settings pages do with apps and clock, each step checked before it is told."""

from phone.waiting import wait_for

from . import hostfiles
from .narrator import check

ZONE = "America/Argentina/Buenos_Aires"


def show_size(phone, narrator, apk):
    """The app's size, beside what its directories hold. No app's code runs on the simulated phone,
    so what one would have saved is put there."""
    code = hostfiles.DATA_ROOT / f"data/app/{apk.package}.apk"
    data = hostfiles.DATA_ROOT / "data/data" / apk.package
    _write(data / "files/saved", 4000)
    _write(data / "cache/fetched", 300)
    told = phone.bramd.call("getAppSize", "s", apk.package)
    whole, cached = _bytes_below(data), _bytes_below(data / "cache")
    there = (code.stat().st_size, whole - cached, cached)
    check(told == there, f"getAppSize told {told}, and the directories hold {there}")
    narrator.step("size", "code {}, data {}, cache {} bytes".format(*told))
    narrator.detail(f"{code}: {there[0]}")
    narrator.detail(f"{data}: {whole}, {cached} of them in cache/")


def stop(phone, narrator, apk):
    """Stops the app; the host's other programs hear of it."""
    if apk.package not in phone.runtime.control("state")["running"]:
        narrator.step("stopped", "no: it does not run")
        return
    closed = phone.bramd.collect_signal("appClosed")
    phone.bramd.call("forceStopApp", "s", apk.package)
    wait_for(lambda: closed, f"appClosed of {apk.package}")
    check(closed == [(apk.package,)], f"appClosed told {closed}")
    running = phone.runtime.control("state")["running"]
    check(apk.package not in running, f"still {running} run")
    narrator.step("stopped", f"it runs no more; on the bus: appClosed {closed[0][0]}")


def move(phone, narrator):
    """Takes the phone to another time zone."""
    def zone():
        return phone.runtime.control("state")["timezone"]
    before = zone()
    check(before not in ("", ZONE), f"the runtime's time zone is '{before}' at first")
    phone.timedate.set_zone(ZONE)
    wait_for(lambda: zone() == ZONE, lambda: f"the runtime's time zone {ZONE}; it is {zone()}")
    narrator.heading("Time zone", f"{ZONE} is set on the host")
    narrator.step("runtime", f"{before} -> {zone()}")


def _write(path, size):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_bytes(bytes(size))


def _bytes_below(directory):
    return sum(path.stat().st_size for path in hostfiles.files_below([directory]))
