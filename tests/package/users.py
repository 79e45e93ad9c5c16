"""Processes of users other than root."""

import grp
import pwd

NOBODY = pwd.getpwnam("nobody")


def as_nobody(*command, group=None):
    """The command line that runs a command as an ordinary user, in one more group if one is given."""
    groups = ["--groups", str(grp.getgrnam(group).gr_gid)] if group else ["--clear-groups"]
    return ["/usr/bin/setpriv", "--reuid", str(NOBODY.pw_uid), "--regid", str(NOBODY.pw_gid),
            *groups, *command]
