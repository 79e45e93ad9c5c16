"""What a person does with an installed app from the host, each step checked before it is told."""

from gi.repository import GLib

from . import hostfiles
from .appgrid import read_entry
from .desktop import Command, entries_for, share_targets
from .narrator import check
from .received import Received, file_behind, short

MAIN = "android.intent.action.MAIN"
VIEW = "android.intent.action.VIEW"
SEND = "android.intent.action.SEND"
SEND_MULTIPLE = "android.intent.action.SEND_MULTIPLE"
STREAM = "android.intent.extra.STREAM"

HOST_TYPE, SCHEME_TYPE = "x-url-handler/", "x-scheme-handler/"


class Use:
    """One installed app on one phone."""

    def __init__(self, phone, narrator, apk, samples):
        self._phone, self._narrator, self._apk = phone, narrator, apk
        self._samples = samples
        self._entries = hostfiles.entries_of(apk.package)

    def show(self):
        self._narrator.heading(f"{self._apk.label} is used")
        self._launch()
        if any("MimeType" in read_entry(path) for path in self._entries):
            self._open_file()
            self._open_link()
        else:
            self._narrator.step("opened", "nothing: it has no handler of any MIME type")
        if share_targets(self._apk.package):
            self._share("shared one", 1)
            self._share("shared two", 2)
        else:
            self._narrator.step("shared", "nothing: it has no share target")

    def _launch(self):
        entry = next((path for path in self._entries if not hostfiles.is_handler(path)), None)
        if not entry:
            self._narrator.step("launched", "no: it has no launcher")
            return
        command, _intent = self._run(entry, MAIN)
        running = self._phone.runtime.control("state")["running"]
        check(command.package in running, f"of {command.package}, {running} run")
        self._narrator.step("launched", f"Exec={read_entry(entry)['Exec']}")
        self._narrator.detail(f"the runtime got MAIN for {self._short_name(command.activity)}, "
                              "and the app runs")

    def _open_file(self):
        for sample in self._samples:
            entry = self._handler_of(sample.mime_type)
            if entry:
                command, intent = self._run(entry, VIEW, sample.path.as_uri())
                self._check_is_readable(intent["data"], sample)
                self._narrator.step("opened", f"{sample.path.name}, by {sample.mime_type}")
                self._show_received(intent["data"], command.activity)
                return
        types = dict.fromkeys(sample.mime_type for sample in self._samples)
        self._narrator.step("opened", f"no file: it has no handler of {' or '.join(types)}")

    def _open_link(self):
        kind = self._link_type()
        if not kind:
            self._narrator.step("opened", "no link: it has no handler of any")
            return
        link = (f"https://{kind.removeprefix(HOST_TYPE)}/read?page=2" if kind.startswith(HOST_TYPE)
                else f"{kind.removeprefix(SCHEME_TYPE)}://example.org/read?page=2")
        command, intent = self._run(self._handler_of(kind), VIEW, link)
        check(intent["data"] == link, f"{link} reached the runtime as {intent['data']}")
        self._narrator.step("opened", f"a link, by {kind}")
        self._show_received(link, command.activity)

    def _share(self, label, count):
        offer = self._offer(count)
        if not offer:
            self._narrator.step(label, "no: it has no share target for our files")
            return
        target, samples = offer
        received = Received(self._phone.runtime)
        self._phone.bramd.call("share", "a{sv}", {
            "mimeType": GLib.Variant("s", samples[0].mime_type),
            "resources": GLib.Variant("as", [str(sample.path) for sample in samples]),
            "selectedTransferMethodInfo": GLib.Variant(
                "a{sv}", {"methodId": GLib.Variant("s", f"{target.package}/{target.activity}")})})
        intent = received.intent()
        self._check_target(intent, SEND if count == 1 else SEND_MULTIPLE, target)
        check(intent["type"] == samples[0].mime_type, f"the shared type is {intent['type']}")
        stream = (intent["extras"] or {}).get(STREAM)
        urls = stream if isinstance(stream, list) else [stream]
        check(len(urls) == count, f"shared was {stream}")
        for url, sample in zip(urls, samples):
            self._check_is_readable(url, sample)
        self._narrator.step(label, f"{' and '.join(sample.path.name for sample in samples)} "
                                   f"into “{target.name}”, which got {intent['type']}")
        for url in urls:
            self._narrator.detail(short(url))

    def _run(self, entry, action, *opened):
        """Starts an entry; returns its command and the intent that the runtime got."""
        command = Command.of_entry(entry, opened)
        received = Received(self._phone.runtime)
        command.run()
        intent = received.intent()
        self._check_target(intent, action, command)
        return command, intent

    def _check_target(self, intent, action, target):
        check(intent, f"the runtime got no good intent for {target.activity}")
        got = intent["action"], intent["componentPackage"], intent.get("componentClass")
        check(got == (action, target.package, target.activity), f"the runtime got {got}")

    def _check_is_readable(self, url, sample):
        file = file_behind(url)
        check(file and file.is_file() and file.read_bytes() == sample.path.read_bytes(),
              f"{sample.path} reached the runtime as {url}")

    def _show_received(self, url, activity):
        self._narrator.detail(f"{self._short_name(activity)} got {short(url)}")

    def _handler_of(self, mime_type):
        return next((path for path in entries_for(mime_type) if path in self._entries), None)

    def _link_type(self):
        types = [kind for path in self._entries
                 for kind in read_entry(path).get("MimeType", "").split(";")
                 if kind.startswith((HOST_TYPE, SCHEME_TYPE)) and self._handler_of(kind)]
        return min(types, key=lambda kind: kind.startswith(SCHEME_TYPE), default=None)

    def _offer(self, count):
        """A share target and as many files of one type as it takes, or None."""
        for target in share_targets(self._apk.package):
            for mime_type in dict.fromkeys(sample.mime_type for sample in self._samples):
                alike = [sample for sample in self._samples if sample.mime_type == mime_type]
                if len(alike) >= count and target.takes(mime_type, several=count > 1):
                    return target, alike[:count]
        return None

    def _short_name(self, activity):
        return activity.removeprefix(self._apk.package)
