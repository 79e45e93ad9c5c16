"""The way of an APK file into the app grid and out again, each step checked before it is told."""

import itertools
import re
import shutil
import stat
import time
from pathlib import Path

from PIL import Image

from phone.namespace import USER
from phone.waiting import wait_for

from . import appgrid, hostfiles
from .narrator import check

DOWNLOADS = Path("/home", USER, "Downloads")

# A handler's entry never had a settings page, and a deletion that finds no file is logged.
EXPECTED_WARNING = re.compile(r'Could not remove: "/usr/share/corvo-settings/entries/bramd_handler_.*')

ANNOUNCED = "Launchers complete. Removing orphans"


class Journey:
    """One APK on one phone: install(), later remove()."""

    def __init__(self, phone, narrator, apk):
        self._phone, self._narrator, self.apk = phone, narrator, apk
        self._entries = []

    def install(self):
        """From the file in the user's downloads to the entries that the host's pages read."""
        apk = self.apk
        self._narrator.heading(
            apk.label, f"{apk.path.name}, {apk.kilobytes} kB: {apk.package} {apk.version}")
        download = DOWNLOADS / apk.path.name
        shutil.copyfile(apk.path, download)
        stopped = self._phone.unit.state() == "inactive"
        states = self._watch_unit()
        notices = len(self._phone.notifications.notices())
        log = self._phone.daemon.log.mark()

        self._narrator.step("runtime", f"{self._phone.unit.unit_name} is {self._phone.unit.state()}")
        self._call("installFile", str(download))
        self._show_staged_file(download)
        if stopped:
            self._show_unit_start(states)
        self._show_installed(notices)
        self._wait_for_announcement(log)
        self._entries = hostfiles.entries_of(apk.package)
        self._show_desktop_entries()
        self._show_settings_entry()
        self._show_share_targets()

    @property
    def launcher_names(self):
        """What the app grid must show of it."""
        return list(self.apk.launchers.values())

    def remove(self):
        """As the home screen does it: by the path of the desktop entry."""
        package = self.apk.package
        self._narrator.heading(f"{self.apk.label} is removed")
        argument = str(self._entries[0]) if self._entries else package
        log = self._phone.daemon.log.mark()
        self._call("removeFile", argument)
        wait_for(lambda: self._installed_version() is None,
                 f"the removal of {package} from the runtime")
        self._narrator.step("runtime", f"does not know {package} any more")
        self._phone.daemon.log.expect(f'onRemovePackage: "{package}"', since=log)
        wait_for(lambda: not hostfiles.traces(package),
                 lambda: f"the end of {hostfiles.traces(package)}")
        self._narrator.step("host", f"desktop entries ({len(self._entries)}), icons and records are "
                                    "gone; no file names it any more")
        # With this all is logged of the removal, which may take longer than the removal itself.
        self._phone.daemon.log.expect(ANNOUNCED, since=log)
        self._phone.daemon.log.claim_all(EXPECTED_WARNING, "warning", since=log)

    def _call(self, method, argument):
        begin = time.monotonic()
        accepted = self._phone.bramd.call(method, "s", argument)
        milliseconds = (time.monotonic() - begin) * 1000
        check(accepted, f"{method} {argument} answered false")
        self._narrator.step(method, f"{argument}: true after {milliseconds:.0f} ms")

    def _show_staged_file(self, download):
        staged = hostfiles.STAGING / download.name
        check(staged.is_file(), f"no staged file {staged}")
        status = staged.stat()
        mode, owner = stat.filemode(status.st_mode), f"{status.st_uid}:{status.st_gid}"
        check((mode, owner) == ("-rw-r--r--", "0:0"), f"{staged} is {mode} {owner}")
        check(staged.read_bytes() == download.read_bytes(), f"{staged} differs from {download}")
        self._narrator.step("staged", f"{staged}")
        self._narrator.detail(f"{mode} root:root, byte for byte the download")

    def _watch_unit(self):
        """A list that grows by each new state of the unit."""
        unit = self._phone.unit
        properties = self._phone.system_bus.object(
            unit.service, unit.unit_path, "org.freedesktop.DBus.Properties")
        return properties.collect_signal("PropertiesChanged")

    def _show_unit_start(self, signals):
        def states():
            # Other properties of the unit change while it is stopped: systemd tells all of them.
            told = ["inactive"] + [changed["ActiveState"] for _interface, changed, _gone in signals
                    if "ActiveState" in changed]
            return [state for state, _repeated in itertools.groupby(told)]
        wait_for(lambda: "active" in states(), "the runtime's unit to become active", 30)
        check(states() == ["inactive", "activating", "active"], f"the unit went through {states()}")
        self._narrator.step("unit started", "inactive -> activating -> active")

    def _show_installed(self, notices):
        notice = self._phone.notifications.wait_for_notice(notices + 1, timeout=30)
        said = notice["summary"] + (f" ({notice['body']})" if notice["body"] else "")
        version = self._installed_version()
        check(version == self.apk.version, f"the runtime has {version or 'no version of it'}; "
                                           f"the user was told “{said}”")
        self._narrator.step("installed", f"the runtime has {self.apk.package} {version}")
        self._narrator.step("notification", f"“{said}”")
        if said.endswith(": "):
            self._narrator.detail("without a name: only the announcement, which follows, brings it")

    def _installed_version(self):
        for app in self._phone.runtime.apps():
            if app["package"] == self.apk.package:
                return app["versionName"]
        return None

    def _wait_for_announcement(self, since):
        """Until the app's launchers are announced, and then all launchers are complete. A runtime that
        has just started says that once more before, of the apps that it had."""
        ours = re.compile(f'Launcher added from umbra: .* \\( "{re.escape(self.apk.package)}" \\)')

        def is_complete():
            texts = self._phone.daemon.log.texts(since)
            named = [index for index, text in enumerate(texts) if ours.fullmatch(text)]
            end = named[-1] if named else 0
            return len(named) >= len(self.apk.launchers) and ANNOUNCED in texts[end:]
        wait_for(is_complete, lambda: f"the announcement of {self.apk.package}; logged was:\n"
                                      f"{self._phone.daemon.log.tail(since)}", 30)

    def _show_desktop_entries(self):
        launchers = [path for path in self._entries if not hostfiles.is_handler(path)]
        check(len(launchers) == len(self.apk.launchers),
              f"{len(self.apk.launchers)} launchers have {len(launchers)} desktop entries")
        for path in self._entries:
            valid, remarks = hostfiles.validate(path)
            check(valid, f"{path} is not valid: {remarks}")
        for path in launchers:
            entry = appgrid.read_entry(path)
            check(entry.get("Name") in self.apk.launchers.values(), f"{path} is named {entry.get('Name')}")
            self._narrator.step("desktop entry", f"{path}  (valid)")
            for line in path.read_text(encoding="utf-8").splitlines():
                self._narrator.detail(line)
            self._show_icon(entry)
        for path in self._entries:
            if hostfiles.is_handler(path):
                self._show_handler(path)

    def _show_icon(self, entry):
        icon = Path(entry["Icon"])
        with Image.open(icon) as image:
            check(image.format == "PNG", f"{icon} is no PNG file")
            size = f"{image.width} x {image.height}"
        source = self.apk.file_with(icon.read_bytes())
        origin = f"the APK's {source}" if source else "drawn by the runtime, no file of the APK"
        self._narrator.step("icon", f"{size} pixels, {origin}")

    def _show_handler(self, path):
        entry = appgrid.read_entry(path)
        check(entry.get("NoDisplay") == "true", f"{path} would show in the grid")
        if "MimeType" in entry:
            activity = entry["Exec"].rsplit("/", 1)[1]
            self._narrator.step("opens", f"{entry['MimeType']}  (.{activity.rsplit('.', 1)[1]})")

    def _show_settings_entry(self):
        pages = [hostfiles.settings_entry(path) for path in self._entries
                 if not hostfiles.is_handler(path)]
        for page in pages:
            check(page and page["packageName"] == self.apk.package,
                  f"the settings entry of {self.apk.package} is {page}")
            self._narrator.step("settings entry",
                                f"{page['packageName']}, version {page['packageVersion']}")

    def _show_share_targets(self):
        for target in hostfiles.share_targets().get(self.apk.package, {}).values():
            check(Path(target["icon"]).is_file(), f"the share target's icon {target['icon']}")
            several = "several" if target["multi"] else "one"
            self._narrator.step("takes shares", f"“{target['caption'] or target['label']}”: "
                                f"{several} of {' '.join(target['mimetypes'])}")
