"""What reached the Android side: the runtime's own record, read with a codec that is not bramd's."""

from pathlib import Path
from urllib.parse import unquote, urlsplit

from phone.namespace import USER

# Where the runtime has the host's directories mounted.
MOUNTS = {"/storage/8ff87de4-0b37-4799-b09a-82773e869e07": Path("/home", USER),
          "/storage/emulated/0": Path("/home", USER, "android_storage")}


class Received:
    """The activities that the runtime was asked to start from now on."""

    def __init__(self, runtime):
        self._runtime = runtime
        self._seen = len(self._starts())

    def intent(self):
        """The one new intent, or None if there is none, several or a malformed one."""
        new = self._starts()[self._seen:]
        return new[0]["decoded"]["intent"] if len(new) == 1 and "problem" not in new[0] else None

    def _starts(self):
        return [record for record in self._runtime.transactions("activity")
                if record.get("method") == "startActivity"]


def file_behind(url):
    """The host's file that an app in the runtime opens by this address, or None."""
    path = unquote(urlsplit(url or "").path)
    for mount, directory in MOUNTS.items():
        if path.startswith(f"{mount}/"):
            return directory / path.removeprefix(f"{mount}/")
    return None


def short(url):
    """The address with the volume's long name cut."""
    return url.replace("8ff87de4-0b37-4799-b09a-82773e869e07", "8ff8...")
