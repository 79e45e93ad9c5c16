"""Draws the app grid as a home screen would, from nothing but desktop entries and their icons."""

import time
from pathlib import Path

from PIL import Image, ImageChops, ImageDraw, ImageFilter, ImageFont

FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
BOLD_FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"

SCREEN = (1080, 1920)
WALLPAPER = ((34, 46, 96), (196, 92, 116))  # top, bottom
HILLS = ((0.62, (92, 62, 120), 120), (0.74, (66, 44, 98), 150), (0.87, (40, 28, 70), 190))
COLUMNS = 4
CELL = (250, 300)
TOP, LEFT = 190, (SCREEN[0] - COLUMNS * CELL[0]) // 2
ICON = 172
ICON_RADIUS = 40
LABEL_WIDTH = CELL[0] - 24


def visible_apps(directory):
    """(name, icon file) of every desktop entry that a home screen shows, by name."""
    apps = []
    for path in Path(directory).glob("*.desktop"):
        entry = read_entry(path)
        if entry.get("Type") == "Application" and entry.get("NoDisplay") != "true":
            apps.append((entry["Name"], entry["Icon"]))
    return sorted(apps, key=lambda app: app[0].casefold())


def read_entry(path):
    """The keys and values of the group [Desktop Entry]."""
    entry, inside = {}, False
    for line in Path(path).read_text(encoding="utf-8").splitlines():
        if line.startswith("["):
            inside = line == "[Desktop Entry]"
        elif inside and "=" in line:
            key, value = line.split("=", 1)
            entry[key] = value
    return entry


def draw(directory, picture):
    """Writes the picture of the grid as PNG file and returns the names it shows."""
    screen = _wallpaper()
    _draw_status_bar(screen)
    apps = visible_apps(directory)
    for index, (name, icon) in enumerate(apps):
        row, column = divmod(index, COLUMNS)
        _draw_app(screen, name, icon, (LEFT + column * CELL[0], TOP + row * CELL[1]))
    screen.convert("RGB").save(picture, optimize=True)
    return [name for name, _icon in apps]


def _draw_app(screen, name, icon, corner):
    x, y = corner[0] + (CELL[0] - ICON) // 2, corner[1]
    tile = _tile(Image.open(icon).convert("RGBA"))
    shadow = Image.new("RGBA", (ICON + 48, ICON + 48))
    shadow.paste((0, 0, 0, 90), (24, 24), tile.getchannel("A"))
    screen.alpha_composite(shadow.filter(ImageFilter.GaussianBlur(9)), (x - 24, y - 16))
    screen.alpha_composite(tile, (x, y))
    font = ImageFont.truetype(FONT, 27)
    _draw_text(screen, (corner[0] + CELL[0] // 2, y + ICON + 40), _fit(name, font), font)


def _tile(icon):
    """The icon in the shape of the grid: one that fills its square is cut to the rounded shape,
    any other is set on a white tile."""
    opaque = icon.getchannel("A").histogram()[255] / (icon.width * icon.height)
    if opaque > 0.85:
        tile = icon.resize((ICON, ICON), Image.LANCZOS)
    else:
        tile = Image.new("RGBA", (ICON, ICON), (255, 255, 255, 255))
        inner = ICON * 3 // 4
        tile.alpha_composite(icon.resize((inner, inner), Image.LANCZOS), ((ICON - inner) // 2,) * 2)
    tile.putalpha(ImageChops.multiply(tile.getchannel("A"), _rounded((ICON, ICON), ICON_RADIUS)))
    return tile


def _rounded(size, radius):
    mask = Image.new("L", (size[0] * 4, size[1] * 4))
    ImageDraw.Draw(mask).rounded_rectangle(
        (0, 0, mask.width - 1, mask.height - 1), radius * 4, fill=255)
    return mask.resize(size, Image.BOX)


def _fit(text, font):
    """The text, shortened with an ellipsis where it is wider than its cell."""
    if font.getlength(text) <= LABEL_WIDTH:
        return text
    while font.getlength(text + "…") > LABEL_WIDTH:
        text = text[:-1].rstrip()
    return text + "…"


def _draw_text(screen, centre, text, font):
    shade = Image.new("RGBA", screen.size)
    ImageDraw.Draw(shade).text((centre[0], centre[1] + 2), text, (0, 0, 0, 120), font, "mm")
    box = (0, centre[1] - 40, screen.width, centre[1] + 40)
    blurred = shade.crop(box).filter(ImageFilter.GaussianBlur(3))
    screen.alpha_composite(blurred, (0, centre[1] - 40))
    ImageDraw.Draw(screen).text(centre, text, (255, 255, 255), font, "mm")


def _wallpaper():
    shade = Image.linear_gradient("L").resize(SCREEN)
    top, bottom = (Image.new("RGB", SCREEN, colour) for colour in WALLPAPER)
    picture = Image.composite(bottom, top, shade)
    width, height = SCREEN
    for index, (level, colour, opacity) in enumerate(HILLS):
        left, y = -width // 2 + index * width // 4, round(height * level)
        mask = Image.new("L", (width * 2, height * 2))
        ImageDraw.Draw(mask).ellipse(
            (left * 2, y * 2, left * 2 + width * 3, y * 2 + height * 2), opacity)
        picture.paste(colour, (0, 0), mask.reduce(2))
    return picture.convert("RGBA")


def _draw_status_bar(screen):
    pen = ImageDraw.Draw(screen)
    white = (255, 255, 255)
    pen.text((56, 62), time.strftime("%H:%M"), white, ImageFont.truetype(BOLD_FONT, 36), "lm")
    for bar in range(4):
        x = 880 + bar * 13
        pen.rounded_rectangle((x, 70 - bar * 8, x + 8, 78), 3, white)
    pen.rounded_rectangle((952, 46, 1010, 78), 8, outline=white, width=4)
    pen.rounded_rectangle((1013, 56, 1018, 68), 2, white)
    pen.rounded_rectangle((959, 53, 992, 71), 3, white)
    pen.rounded_rectangle((410, 1890, 670, 1898), 4, white)
