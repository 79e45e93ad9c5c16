"""usage: python3 -m demo [--keep] PICTURE APK...

To be run inside the simulated phone (sim/phone/enter): installs every APK, draws the app grid into
the file PICTURE, uses every app as a person would, and removes it again. With --keep the apps stay,
and a shell is opened.
"""

import os
import subprocess
import sys
from pathlib import Path

from gi.repository import GLib

from phone.interactive import run_shell
from phone.phone import Phone
from phone.waiting import wait_for

from . import appgrid, care, hostapps, hostfiles, samples
from .apkfile import ApkFile
from .journey import Journey
from .narrator import Failure, Narrator, check
from .use import Use

HOST_ICONS = Path("/run/demo/icons")


def tell(phone, narrator, apks, picture, show_kept=None):
    """The whole story; any claim that does not hold ends it with an exception. With show_kept(phone)
    the apps stay, and it is called at the end."""
    hostapps.install(hostfiles.APPLICATIONS, HOST_ICONS)
    subprocess.run(["/usr/bin/update-desktop-database", "-q"], check=True)
    phone.start_daemon()
    level, release, _patch = phone.bramd.call("getAndroidVersionData")
    narrator.heading("Phone", f"bramd is up; in the container: Android {release}, SDK {level}")
    before = hostfiles.snapshot(hostfiles.HOST)

    journeys = [Journey(phone, narrator, apk) for apk in apks]
    for journey in journeys:
        journey.install()
    show_grid(narrator, journeys, picture)
    # Of two versions of an app, the later one has replaced the other.
    installed = {journey.apk.package: journey for journey in journeys}.values()
    show_use(phone, narrator, [journey.apk for journey in installed])
    if show_kept:
        narrate_end(narrator)
        show_kept(phone)
        return
    for journey in installed:
        journey.remove()
    show_rest(phone, narrator, before)
    narrate_end(narrator)


def narrate_end(narrator):
    narrator.heading("Done", f"every line above was checked; {narrator.seconds:.1f} s")


def show_grid(narrator, journeys, picture):
    """Draws the picture; every launcher is in it."""
    shown = appgrid.draw(hostfiles.APPLICATIONS, picture)
    for journey in journeys:
        missing = [label for label in journey.launcher_names if label not in shown]
        check(not missing, f"not in the app grid: {missing}")
    narrator.heading("App grid", f"{len(shown)} apps: {', '.join(shown)}")
    narrator.step("picture", picture)


def show_use(phone, narrator, apks):
    """Everything that one does with an app between its installation and its removal."""
    files = samples.put_into_home()
    for apk in apks:
        Use(phone, narrator, apk, files).show()
        care.show_size(phone, narrator, apk)
        care.stop(phone, narrator, apk)
    care.move(phone, narrator)


def show_rest(phone, narrator, before):
    """What is left of the apps: nothing, once the daemon has emptied its staging directory."""
    narrator.heading("What is left")
    check(phone.runtime.apps() == [], f"the runtime still has {phone.runtime.apps()}")
    narrator.step("runtime", "no app")

    # The desktop database follows last, by a program of its own.
    wait_for(lambda: not hostfiles.OURS.search(hostfiles.DATABASE.read_text(encoding="utf-8")),
             f"the end of the handlers in {hostfiles.DATABASE}")
    after = hostfiles.snapshot(hostfiles.HOST)
    changed = [str(path) for path in sorted(before.keys() | after.keys())
               if before.get(path) != after.get(path) and path != hostfiles.SHARING]
    check(not changed, f"not as before the first install: {changed}")
    check(not hostfiles.share_targets(), f"{hostfiles.SHARING} still holds targets")
    narrator.step("host", "every file as before the first install, no target in sharing.json:")
    for directory in hostfiles.HOST:
        names = [path.name for path in hostfiles.files_below([directory])]
        narrator.detail(f"{directory}: {' '.join(names) or 'nothing'}")

    staged = len(list(hostfiles.STAGING.iterdir()))
    trouble = phone.daemon.log.unclaimed_trouble()
    check(not trouble, f"bramd logged: {trouble}")
    check(phone.stop_daemon() == 0, str(phone.daemon.process))
    phone.start_daemon()
    check(not list(hostfiles.STAGING.iterdir()), f"{hostfiles.STAGING} is not empty")
    narrator.step("staging", f"nothing, bramd being started anew ({staged} files before)")


def main(arguments):
    keep = arguments[:1] == ["--keep"]
    words = arguments[1:] if keep else arguments
    if len(words) < 2:
        print(__doc__.strip(), file=sys.stderr)
        return 64
    narrator = Narrator()
    phone = None
    try:
        apks = [ApkFile(path) for path in words[1:]]
        with Phone(services=("notifications", "timedate")) as phone:
            tell(phone, narrator, apks, Path(words[0]), run_shell if keep else None)
        return 0
    except KeyboardInterrupt:
        narrator.failure("interrupted; the phone is gone, and nothing of it is left")
        return 130
    except BrokenPipeError:
        # Nobody reads on: nothing more is to be told, not even by Python at its end.
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        return 1
    # A condition that never came true is an AssertionError, an error from a bus a GLib.Error.
    except (Failure, AssertionError, GLib.Error, OSError) as error:
        narrator.failure(str(error))
        if phone and phone.daemon:
            print(f"\nThe last that bramd logged:\n{phone.daemon.log.tail(count=25)}")
        return 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
