"""Grids of tiles that do not make up their picture: the file gets its old name back."""

import subprocess

from harness import UNDECODABLE, WatchTestCase, failure
from pictures import SAMPLES

BAD = {
    "missing": "missing=1",
    "unequal": "odd=16",
    "too-small": "wider=60",
}


class HeicGrids(WatchTestCase):
    def test_grids_that_do_not_fit_are_refused(self):
        contents, lines = {}, []
        for name, option in BAD.items():
            made = self.base / f"{name}.heic"
            command = [SAMPLES / "heic-grid.py", SAMPLES / "photo.png", made, "tile=96", option]
            subprocess.run(command, check=True)
            self.put(made, f"{name}.heic")
            contents[name] = self.read(f"{name}.heic")
            lines += failure(UNDECODABLE, f"{name}.png", "heic")
        self.start()
        for name in BAD:
            self.rename(f"{name}.heic", f"{name}.png", reverted=f"{name}.heic")
        self.assertPrinted(*lines)
        for name, content in contents.items():
            self.assertEqual(self.read(f"{name}.heic"), content, name)
