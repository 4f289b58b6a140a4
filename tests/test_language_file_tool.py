"""Runs the translators' tool under Wine: text files, language files and their check."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

REPOSITORY = pathlib.Path(__file__).parent.parent
TOOL = pathlib.Path(os.environ["PRODUCT_SERVICES_BIN"], "LanguageFileTool.exe").absolute()
GERMAN = REPOSITORY / "samples" / "lang" / "DE"
ENGLISH_INSTEAD = "; unless the library can open it for reading and writing, it shows its English texts."


class ToolTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_tool(self, *arguments):
        """Exit status and lines of the tool, which runs in the test's folder."""
        run = subprocess.run([REPOSITORY / "tools" / "wine.sh", TOOL, *arguments], cwd=self.folder, timeout=60,
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        return run.returncode, run.stdout.decode("utf-8").splitlines()

    def expect(self, arguments, status, lines):
        self.assertEqual(self.run_tool(*arguments), (status, lines))

    def succeed(self, *arguments):
        self.expect(arguments, 0, [])

    def read(self, name):
        return (self.folder / name).read_bytes()

    def write(self, name, data):
        (self.folder / name).write_bytes(data)


class TextFileTest(ToolTest):
    def text_file(self, changes=()):
        """A text file as it comes from "export", with some texts changed."""
        texts = {**{i: f"Text {i}" for i in range(88)}, **dict(changes)}
        return "".join(f"{i}={text}\n" for i, text in texts.items())

    def test_round_trips_are_exact(self):
        self.succeed("export", "english.txt")
        lines = self.read("english.txt").decode("utf-8").split("\n")
        for id_, usage, english in ((12, "upgrade center: the button that leaves it", "Exit"),
                                    (57, "message box of the update check; message of result code 503",
                                     "No internet found!"),
                                    (77, "message of result code 0", "Unstable internet connection.")):
            at = lines.index(f"{id_}={english}")
            self.assertEqual(lines[at - 1], f"# {id_} - {usage}; English: {english}")
        self.assertIn("# 78 to 87 - reserved, never shown", lines)

        edited = {12: "  Schließen ", 22: "a|b||c|", 23: "=#x=", 24: "日本 \U0001F600 \t", 38: "# no comment"}
        for id_, text in edited.items():
            lines = [f"{id_}={text}" if line.startswith(f"{id_}=") else line for line in lines]
        self.write("mine.txt", "\n".join(lines).encode("utf-8"))
        self.succeed("build", "mine.txt", "mine.lang")
        built = self.read("mine.lang").decode("utf-16-le").split("\n")
        self.assertEqual((len(built), built[87]), (88, "(reserved 87)"))
        self.assertEqual({id_: built[id_] for id_ in edited}, edited)
        self.succeed("check", "mine.lang")
        self.succeed("export", "back.txt", "--from", "mine.lang")
        self.assertEqual(self.read("back.txt"), self.read("mine.txt"))

    def test_what_editors_on_windows_do_changes_nothing(self):
        text = self.text_file({12: "Schließen ", 13: "a|b"})
        self.write("plain.txt", text.encode("utf-8"))
        self.succeed("build", "plain.txt", "plain.lang")
        plain = self.read("plain.lang")
        reversed_lines = "\n".join(reversed(text.splitlines()))
        for name, data in (("mark and CRLF", b"\xef\xbb\xbf" + text.replace("\n", "\r\n").encode("utf-8")),
                           ("no last line end, other order", reversed_lines.encode("utf-8")),
                           ("blank lines", b" \t\n\n" + text.encode("utf-8") + b"\r\n\r\n#")):
            with self.subTest(name):
                self.write("mine.txt", data)
                self.succeed("build", "mine.txt", "MINE.LANG")
                self.assertEqual(self.read("MINE.LANG"), plain)

        self.write("edited.lang", b"\xff\xfe" + plain.replace(b"\n\0", b"\r\0\n\0") + b"\r\0\n\0")
        self.succeed("export", "plain.txt", "--from", "plain.lang")
        self.succeed("export", "edited.txt", "--from", "edited.lang")
        self.assertEqual(self.read("edited.txt"), self.read("plain.txt"))

    def test_a_broken_text_file_ends_in_one_sentence(self):
        good = self.text_file().encode("utf-8")
        form = "this is neither a text, such as 12=Exit, nor a comment, which starts with #"
        cases = [
            (good.replace(b"12=Text 12\n", b""), 87, "the file ends without text 12"),
            (good.replace(b"87=Text 87\n", b"#"), 88, "the file ends without text 87"),
            (b"", 0, "the file ends without text 0"),
            (good + b"12=x", 89, "text 12 is in line 13 already"),
            (b"# x\n88=x\n" + good, 2, "there is no text 88, only 0 to 87"),
            (b"-1=x\n", 1, "there is no text -1, only 0 to 87"),
            (b"4294967308=x\n", 1, "there is no text 4294967308, only 0 to 87"),
            *((line, 1, form) for line in (b"Exit", b" 12=x", b"12 =x", b"12", b"=x", b"1x=x", b"+1=x")),
            (b"#\n12=a\rb\n", 2, "a carriage return is inside of the line"),
            (b"#\n12=Schlie\xdfen\n", 2, "this is not UTF-8"),
            (b"# \xed\xa0\x80\n", 1, "this is not UTF-8"),
            ("\ufeff0=x\n".encode("utf-16-le"), 1, "this is not UTF-8"),
        ]
        for data, line, what in cases:
            with self.subTest(what, data=data[-40:]):
                self.write("grün.txt", data)
                self.expect(("build", "grün.txt", "x.lang"), 1, [f"grün.txt, line {line}: {what}."])
                self.assertFalse((self.folder / "x.lang").exists())

    def test_files_that_cannot_be_opened(self):
        self.write("good.txt", self.text_file().encode("utf-8"))
        self.write("short.lang", "a\nb".encode("utf-16-le"))
        self.write("odd.lang", "\n".join(f"{i}" for i in range(88)).encode("utf-16-le") + b"x")
        for name in ("folder.txt", "folder.lang"):
            (self.folder / name).mkdir()
        no_texts = " does not hold the 88 texts; LanguageFileTool check says more."
        for arguments, sentence in (
                ("build none.txt x.lang", "none.txt does not exist."),
                ("build folder.txt x.lang", "folder.txt is a folder."),
                ("build good.txt folder.lang", "folder.lang cannot be written."),
                ("build good.txt nowhere/x.lang", "nowhere/x.lang cannot be written."),
                ("export folder.txt", "folder.txt cannot be written."),
                ("export x.txt --from none.lang", "none.lang does not exist" + ENGLISH_INSTEAD),
                ("export x.txt --from short.lang", "short.lang" + no_texts),
                ("export x.txt --from odd.lang", "odd.lang" + no_texts)):
            with self.subTest(arguments):
                self.expect(arguments.split(), 1, [sentence])

    def test_wrong_usage_writes_no_file(self):
        for arguments in ("", "export", "check", "build x.txt", "export x.lang", "build x.lang x.txt",
                          "export x.txt --from x.txt", "export x.txt x.lang", "check x.lang y.lang",
                          "chek x.lang"):
            with self.subTest(arguments):
                status, lines = self.run_tool(*arguments.split())
                self.assertEqual((status, lines[-1][:14]), (2, "Exit status: 0"))
        self.assertEqual(list(self.folder.iterdir()), [])


class CheckTest(ToolTest):
    @staticmethod
    def lang(changes=(), count=88, end="\n"):
        return end.join(dict(changes).get(i, f"Text {i}") for i in range(count)).encode("utf-16-le")

    def test_what_a_user_would_see_wrong(self):
        no_line_feed = "a line ends with a line feed alone."
        placeholders = 'Line 13: its placeholders are {}, those of the English text "Exit" are none.'
        last = "Line 89: the line feed before it makes one more, empty, text."
        cases = [
            ("clean", self.lang({12: "100 % sicher, 5%", 22: "%% |", 24: "\U0001F600"}), []),
            ("too few", self.lang(count=87),
             ["Line 87: this is the last line, 88 must be there; the texts from 87 on are empty."]),
            ("too many", self.lang(count=90),
             ["Line 89: there are 90 lines, 88 must be there; the texts from here on are never shown."]),
            ("no byte", b"", ['Line 1: the text is empty, in English it is "(reserved 0)".',
                              "Line 1: this is the last line, 88 must be there; the texts from 1 on are empty."]),
            ("last line feed", self.lang() + b"\n\0", [last]),
            ("empty", self.lang({12: "", 38: ""}), ['Line 13: the text is empty, in English it is "Exit".',
                                                    'Line 39: the text is empty, in English it is "Buy now".']),
            ("placeholders", self.lang({12: "%d von %-5.2ls"}), [placeholders.format("%d %-5.2ls")]),
            ("byte-order mark", b"\xff\xfe" + self.lang(),
             ["Line 1: the text starts with a byte-order mark, a character like any other here."]),
            ("a carriage return", self.lang({12: "Ende\r"}),
             ["Line 13: a carriage return is part of the text, as in 1 of the lines; " + no_line_feed]),
            ("CRLF", self.lang({5: ""}, end="\r\n") + b"\r\0\n\0",
             ['Line 6: the text is empty, in English it is "(reserved 5)".',
              "Line 1: a carriage return is part of the text, as in 88 of the lines; " + no_line_feed, last]),
            ("odd byte", self.lang() + b"x", ["Line 88: reading stops here, at half a character."]),
            ("half a pair", self.lang(count=12) + b"\n\0a\0\0\xdcb\0\n\0",
             ["Line 13: reading stops here, at half a surrogate pair.",
              "Line 13: this is the last line, 88 must be there; the texts from 13 on are empty."]),
        ]
        for name, data, sentences in cases:
            with self.subTest(name):
                self.write("x.lang", data)
                self.expect(("check", "x.lang"), 1 if sentences else 0, sentences)
                self.assertEqual(self.read("x.lang"), data)

    def test_a_file_that_the_library_would_pass_over(self):
        (self.folder / "folder.lang").mkdir()
        # Root may write to read-only files, but nobody may write to a program that runs.
        running = shutil.copy("/bin/sleep", self.folder / "running.lang")
        with subprocess.Popen([running, "60"]) as process:
            try:
                for name, why in (("none.lang", "does not exist"), ("nowhere/x.lang", "does not exist"),
                                  ("folder.lang", "is a folder"), ("running.lang", "cannot be opened")):
                    with self.subTest(name):
                        self.expect(("check", name), 1, [f"{name} {why}{ENGLISH_INSTEAD}"])
            finally:
                process.kill()

    def test_the_german_set(self):
        for name in ("de.txt", "Vemo_DE.lang"):
            shutil.copy(GERMAN / name, self.folder)
        self.succeed("check", "Vemo_DE.lang")
        self.succeed("build", "de.txt", "built.lang")
        self.assertEqual(self.read("built.lang"), self.read("Vemo_DE.lang"))
        self.succeed("export", "back.txt", "--from", "Vemo_DE.lang")
        self.assertEqual(self.read("back.txt"), self.read("de.txt"))

    def test_the_template_is_what_the_tool_exports(self):
        self.succeed("export", "exported.txt")
        self.assertEqual(self.read("exported.txt"), (REPOSITORY / "samples/lang/template.txt").read_bytes())


if __name__ == "__main__":
    unittest.main()
