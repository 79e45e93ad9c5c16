"""The apps a phone has of its own: entries and icons that stand beside those of Android apps, and
that no step of the demonstration may touch."""

from drawing import Drawing

ICON_SIZE = 172
WHITE = (255, 255, 255)


def phone():
    icon = Drawing((112, 220, 130), (22, 160, 84))
    icon.arc((64, 32), 34, (97, 173), WHITE, 11)
    icon.line([(31, 37), (37, 30)], WHITE, 13)
    icon.line([(59, 65), (66, 59)], WHITE, 13)
    return icon


def messages():
    icon = Drawing((88, 168, 255), (30, 92, 230))
    icon.box((20, 26, 76, 64), 14, WHITE)
    icon.polygon([(30, 58), (30, 76), (50, 60)], WHITE)
    for x in (36, 48, 60):
        icon.disc((x, 45), 3.6, (52, 120, 240))
    return icon


def people():
    icon = Drawing((255, 196, 92), (240, 140, 40))
    icon.disc((48, 37), 14, WHITE)
    icon.dome((48, 77), 26, WHITE)
    return icon


def browser():
    icon = Drawing((70, 210, 226), (16, 124, 190))
    icon.disc((48, 48), 30, WHITE)
    icon.polygon([(66, 30), (53, 53), (43, 43)], (238, 84, 84))
    icon.polygon([(30, 66), (43, 43), (53, 53)], (150, 170, 190))
    return icon


def camera():
    icon = Drawing((130, 138, 156), (64, 70, 88))
    icon.box((18, 32, 78, 72), 9, WHITE)
    icon.polygon([(35, 34), (40, 24), (56, 24), (61, 34)], WHITE)
    icon.disc((48, 52), 14, (64, 70, 88))
    icon.disc((48, 52), 8.5, (126, 190, 255))
    return icon


def gallery():
    icon = Drawing((255, 140, 170), (220, 60, 110))
    icon.box((18, 24, 78, 72), 7, WHITE)
    icon.disc((33, 38), 5.5, (255, 190, 60))
    icon.polygon([(23, 66), (42, 44), (56, 58), (63, 51), (73, 66)], (230, 84, 130))
    return icon


def clock():
    icon = Drawing((74, 80, 110), (28, 30, 52))
    icon.disc((48, 48), 30, WHITE)
    icon.line([(48, 48), (48, 27)], (36, 40, 66), 4)
    icon.line([(48, 48), (62, 55)], (36, 40, 66), 4)
    icon.disc((48, 48), 3.4, (240, 90, 92))
    return icon


def notes():
    icon = Drawing((255, 224, 110), (246, 180, 40))
    icon.box((24, 20, 72, 78), 6, WHITE)
    for y, right in ((36, 62), (48, 62), (60, 50)):
        icon.line([(34, y), (right, y)], (226, 190, 96), 3.6)
    return icon


def settings():
    icon = Drawing((170, 178, 192), (104, 112, 130))
    for y, knob in ((32, 58), (48, 38), (64, 54)):
        icon.line([(24, y), (72, y)], (222, 228, 238), 4.4)
        icon.disc((knob, y), 7, WHITE)
    return icon


APPS = (phone, messages, people, browser, camera, gallery, clock, notes, settings)


def install(entries, icons):
    """Writes one desktop entry per app into the directory entries and its icon into icons."""
    icons.mkdir(parents=True, exist_ok=True)
    for app in APPS:
        name = app.__name__
        icon = icons / f"{name}.png"
        app().save(icon, ICON_SIZE)
        (entries / f"{name}.desktop").write_text(
            "[Desktop Entry]\n"
            "Type=Application\n"
            f"Name={name.capitalize()}\n"
            f"Exec=/usr/bin/{name}\n"
            f"Icon={icon}\n", encoding="utf-8")
