"""Icons drawn from a few shapes, for the apps of the simulated phone."""

from PIL import Image, ImageDraw, ImageOps

SIZE = 768  # of the drawing, in pixels


class Drawing:
    """Shapes on a 96 x 96 grid over a rounded square, shaded from the colour top to bottom."""

    def __init__(self, top, bottom):
        shade = Image.linear_gradient("L").resize((SIZE, SIZE))
        mask = Image.new("L", (SIZE, SIZE))
        ImageDraw.Draw(mask).rounded_rectangle((0, 0, SIZE - 1, SIZE - 1), SIZE * 0.22, fill=255)
        self.image = ImageOps.colorize(shade, top, bottom).convert("RGBA")
        self.image.putalpha(mask)
        self._draw = ImageDraw.Draw(self.image)

    def polygon(self, points, fill):
        self._draw.polygon([self._at(*point) for point in points], fill)

    def arc(self, centre, radius, angles, fill, width):
        """Part of a circle; angles as (first, last), clockwise in degrees from three o'clock."""
        self._draw.arc(self._around(centre, radius), *angles, fill, self._length(width))

    def line(self, points, fill, width):
        scaled = [self._at(*point) for point in points]
        self._draw.line(scaled, fill, self._length(width), "curve")
        for point in (points[0], points[-1]):
            self.disc(point, width / 2, fill)

    def disc(self, centre, radius, fill):
        self._draw.ellipse(self._around(centre, radius), fill)

    def dome(self, centre, radius, fill):
        """The upper half of a disc."""
        self._draw.pieslice(self._around(centre, radius), 180, 360, fill)

    def box(self, corners, radius, fill):
        """A rectangle; corners as (left, top, right, bottom)."""
        left, top, right, bottom = corners
        self._draw.rounded_rectangle(
            (*self._at(left, top), *self._at(right, bottom)), self._length(radius), fill)

    def save(self, path, size):
        """Writes a PNG file of size x size pixels."""
        self.image.resize((size, size), Image.BOX).save(path)

    @staticmethod
    def _length(units):
        return round(units * SIZE / 96)

    def _at(self, x, y):
        return self._length(x), self._length(y)

    def _around(self, centre, radius):
        x, y = centre
        return (*self._at(x - radius, y - radius), *self._at(x + radius, y + radius))
