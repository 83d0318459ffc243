"""The manuals format without a word, and the completions complete."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

PACKAGING = Path(__file__).parents[2] / "packaging"
COMPLETION = PACKAGING / "completion"


class CommandLine(unittest.TestCase):
    @unittest.skipUnless(shutil.which("man"), "this machine has no man")
    def test_the_manuals_format_without_warnings(self):
        for manual, line in (("corvanectl.1", "corvanectl validate FILE [--json]"),
                             ("Corvane.1", "~/Library/Preferences/org.corvane.Corvane.plist"),
                             ("CorvaneRootHelper.8", "  --user-home PATH              the home of that user")):
            shown = subprocess.run(["man", "--warnings", "-l", PACKAGING / "man" / manual], capture_output=True,
                                   text=True, env={**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "100"}, check=True)
            self.assertEqual(shown.stderr, "", manual)
            self.assertIn(line, shown.stdout, manual)

    def test_bash_completes_commands_options_values_and_labels(self):
        folder = Path(tempfile.mkdtemp(prefix="corvane-completion-"))
        self.addCleanup(shutil.rmtree, folder)
        listing = folder / "corvanectl"
        listing.write_text("#!/bin/sh\nprintf 'LABEL  NAME\\nquill  Quill\\ntern   Tern\\n'\n")
        listing.chmod(0o755)
        script = ('source "$0"; COMP_WORDS=(corvanectl "$@"); COMP_CWORD=$#; _corvanectl; '
                  'printf "%s\\n" "${COMPREPLY[@]}"')
        for words, expected in ((["st"], ["status"]), (["update", "--a"], ["--all"]), (["check", "q"], ["quill"]),
                                (["list", "--filter", "al"], ["all", "alerts"]), (["status", "q"], [])):
            done = subprocess.run(["bash", "-c", script, COMPLETION / "corvanectl.bash", *words], capture_output=True,
                                  text=True, env={"PATH": f"{folder}:/usr/bin:/bin"}, check=True)
            self.assertEqual((done.stdout.split(), done.stderr), (expected, ""), words)

    @unittest.skipUnless(shutil.which("zsh"), "this machine has no zsh")
    def test_zsh_takes_its_completion(self):
        subprocess.run(["zsh", "-n", COMPLETION / "_corvanectl"], check=True)


if __name__ == "__main__":
    unittest.main()
