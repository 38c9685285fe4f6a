#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Starts daemons that may not capture in the kernel, and looks at what they do instead and how they explain it.

    fall_back.py DAEMON

Takes root, in order to give it up. Where it cannot run it says why and ends with 77, which ctest takes for "skipped".
"""

import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from capturing_daemon import CapturingDaemon, skip_where_it_cannot_run

NOBODY = 65534


class FallBack(unittest.TestCase):
    daemon_program = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="nevtora-fall-back-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        shutil.chown(self.folder, NOBODY, NOBODY)

    def check_source(self, source, reason, *prefix):
        """Of a daemon that is left to choose, started by the command `prefix`."""
        program = self.folder / "daemon"  # where everybody may run it
        shutil.copy(self.daemon_program, program)
        script = self.folder / "start"
        script.write_text(f'#!/bin/sh\nexec {" ".join(prefix)} {program} "$@"\n')
        script.chmod(0o755)
        daemon = CapturingDaemon(script, self.folder, capture="auto")
        self.addCleanup(daemon.close)
        command = [program, "--status", "--database", daemon.database]
        status = subprocess.run(command, check=True, capture_output=True, text=True).stdout
        line = next(line for line in status.splitlines() if line.startswith("source:"))
        self.assertIn(f" {source}", line)
        self.assertIn(reason, line)

    def test_root_captures_in_the_kernel(self):
        self.check_source("bpf", "it sees most")

    def test_somebody_without_privileges_uses_socket_diagnostics(self):
        self.check_source(
            "diag", "it takes root", "setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups"
        )

    def test_a_system_that_hides_its_control_groups_leaves_socket_diagnostics(self):
        hide = "for m in $(awk '$3 == \"cgroup2\" {print $2}' /proc/mounts); do mount -t tmpfs none $m; done"
        inside = self.folder / "inside"
        inside.write_text(f'#!/bin/sh\n{hide}\nexec setpriv --bounding-set=-sys_admin --inh-caps=-sys_admin "$@"\n')
        inside.chmod(0o755)
        self.check_source("diag", "control groups", "unshare", "--mount", str(inside))


if __name__ == "__main__":
    skip_where_it_cannot_run()
    FallBack.daemon_program = sys.argv[1]
    unittest.main(argv=sys.argv[:1], verbosity=2)
