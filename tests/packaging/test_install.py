"""What `cmake --install` puts where, and whether the desktop understands it. Needs KELDRA_BUILD and KELDRA_SOURCE."""
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

BUILD = pathlib.Path(os.environ["KELDRA_BUILD"])
SOURCE = pathlib.Path(os.environ["KELDRA_SOURCE"])
ID = "com.keldra.KELDRA"


class InstallTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.prefix = pathlib.Path(cls.folder.name)
        subprocess.run(["cmake", "--install", BUILD, "--prefix", cls.prefix], check=True, stdout=subprocess.DEVNULL)

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def accepted(self, *command):
        done = subprocess.run(list(map(str, command)), capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stderr), (0, ""), done.stdout)
        return done.stdout

    def test_everything_is_in_its_place(self):
        found = {str(path.relative_to(self.prefix)) for path in self.prefix.rglob("*") if path.is_file()}
        self.assertEqual(found, {
            "bin/keldra",
            f"share/applications/{ID}.desktop",
            f"share/metainfo/{ID}.metainfo.xml",
            f"share/icons/hicolor/scalable/apps/{ID}.svg",
            f"share/icons/hicolor/symbolic/apps/{ID}-symbolic.svg",
            "share/man/man1/keldra.1",
            "share/bash-completion/completions/keldra",
            "share/zsh/vendor-completions/_keldra",
            "share/fish/vendor_completions.d/keldra.fish",
            "share/doc/keldra/copyright"})
        self.assertTrue(self.accepted(self.prefix / "bin/keldra", "--version").startswith("keldra "))

    def test_the_desktop_entry_and_the_metainfo_are_valid(self):
        entry = self.prefix / f"share/applications/{ID}.desktop"
        self.assertEqual(self.accepted("desktop-file-validate", entry), "")
        self.accepted("appstreamcli", "validate", "--no-net", "--pedantic",
                      self.prefix / f"share/metainfo/{ID}.metainfo.xml")

    def test_shells_and_the_manual_understand_their_files(self):
        readers = {"bash": "share/bash-completion/completions/keldra", "zsh": "share/zsh/vendor-completions/_keldra",
                   "fish": "share/fish/vendor_completions.d/keldra.fish"}
        for shell, file in readers.items():
            if shutil.which(shell):
                with self.subTest(shell):
                    self.accepted(shell, "-n", self.prefix / file)
        if shutil.which("groff"):
            self.accepted("groff", "-man", "-Tutf8", "-ww", "-z", self.prefix / "share/man/man1/keldra.1")

    def test_the_command_line_is_told_the_same_everywhere(self):
        """Every command and option of --help is in the manual and in the completions."""
        told = self.accepted(self.prefix / "bin/keldra", "--help")
        words = {word.strip("[](),.;") for line in told.splitlines() for word in line.split() if "--" in word}
        options = {word.split("=")[0] for word in words if word.startswith("--")}
        self.assertIn("--display", options)
        commands = {line.split()[1] for line in told.splitlines() if line.startswith("keldra ")} - {"--version", "--open"}
        commands = {command for command in commands if command.isalpha() and command.islower()}
        self.assertIn("record", commands)
        manual = (self.prefix / "share/man/man1/keldra.1").read_text().replace("\\-", "-")
        bash = (self.prefix / "share/bash-completion/completions/keldra").read_text()
        zsh = (self.prefix / "share/zsh/vendor-completions/_keldra").read_text()
        fish = (self.prefix / "share/fish/vendor_completions.d/keldra.fish").read_text()
        for word in sorted(options | commands):
            self.assertIn(word, manual)
            self.assertIn(word, bash)
            self.assertIn(word, zsh + "--help")
            self.assertIn(f"-l {word[2:]}" if word.startswith("--") else f"-a {word}", fish)


class CatalogueTest(unittest.TestCase):
    def test_the_catalogues_have_every_word_of_the_sources(self):
        """Whoever changes a word runs `cmake --build build/dev --target keldra_words`."""
        lupdate = os.environ["KELDRA_LUPDATE"]
        catalogues = sorted((SOURCE / "resources/translations").glob("keldra_*.ts"))
        self.assertIn("keldra_en.ts", [each.name for each in catalogues])
        with tempfile.TemporaryDirectory() as folder:
            copies = [shutil.copy(each, folder) for each in catalogues]
            subprocess.run([lupdate, "-silent", "-no-obsolete", "-locations", "none", "-extensions", "cpp,h,qml",
                            SOURCE / "src", "-ts", *copies], check=True)
            for each, copy in zip(catalogues, copies):
                self.assertEqual(each.read_text(), pathlib.Path(copy).read_text(), f"{each.name} is behind the sources")

    def test_english_speaks_of_this_desktop(self):
        catalogue = (SOURCE / "resources/translations/keldra_en.ts").read_text()
        for foreign in "Finder", "macOS", "on this Mac":
            for part in catalogue.split("<translation")[1:]:
                self.assertNotIn(foreign, part.split("</translation>")[0])


if __name__ == "__main__":
    unittest.main()
