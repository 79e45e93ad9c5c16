"""usage: python3 -m realdemo [--keep]

The story of ./demo, told by the machine. With --keep the app stays."""

import os
import sys
from pathlib import Path

from gi.repository import GLib

from demo.__main__ import tell
from demo.apkfile import ApkFile
from demo.narrator import Failure, Narrator

from realphone import RealPhone

APKS = Path(os.environ["BRAMD_BUILD_DIR"]) / "sim" / "apks"


def main(arguments):
    narrator = Narrator()
    phone = RealPhone(whole_log=False)
    show_kept = (lambda _phone: None) if arguments == ["--keep"] else None
    try:
        phone.log_in()
        phone.enter_session()
        tell(phone, narrator, [ApkFile(APKS / "papertrail.apk")], Path("/run/appgrid.png"),
             show_kept)
        return 0
    except (Failure, AssertionError, GLib.Error, OSError) as error:
        narrator.failure(str(error))
        print(f"\nThe last that bramd logged:\n{phone.daemon.log.tail(count=25)}")
        return 1
    finally:
        phone.stop()


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
