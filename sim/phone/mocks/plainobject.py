"""A bus object of a mock that is not one of python3-dbusmock's own."""

from collections import defaultdict

import dbus.service


class PlainObject(dbus.service.Object):
    """python3-dbusmock looks up every object's methods in this table first, and only when they
    are missing there in the class."""

    methods = defaultdict(dict)
