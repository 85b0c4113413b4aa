"""Help, manual page, completions and parser hold the same options: they come from one table."""

import pathlib
import re
import shutil
import subprocess
import unittest

from calls import EXAMPLES, Case, unfolded

COMMANDS = ("partition", "verify", "lint", "stats")


class Table(Case):
    def options_in_help(self, command):
        """The long options, and the places, that the help of a command lists."""
        text = self.run_ok(command, "--help").stdout
        options = set(re.findall(r"^  (?:-\w,)?(--[\w-]+)", text, re.M)) - {"--help"}
        return options, set(re.findall(r"^  ([A-Z]+) ", text, re.M))

    def options_in_manual(self, command):
        page = self.run_ok("--man").stdout
        section = re.search(rf"^\.SH {command.upper()}\n(.*?)^\.SH ", page, re.M | re.S).group(1)
        heads = re.findall(r"^\.TP\n\\fB(.*?)\\fR", section, re.M)
        names = {head.replace("\\-", "-").split(", ")[-1] for head in heads}
        return {name for name in names if name[0] == "-"}, {n for n in names if n[0] != "-"}

    def complete(self, *words):
        """What bash offers for the last word."""
        script = self.run_ok("--completion", "bash").stdout
        script += 'COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _zorpelx\n'
        script += 'printf "%s\\n" "${COMPREPLY[@]}"\n'
        done = subprocess.run(
            ["bash", "-c", script, "bash", "zorpelx", *words],
            cwd=self.folder,
            capture_output=True,
            text=True,
            check=True,
        )
        self.assertEqual(done.stderr, "")
        return {line for line in done.stdout.splitlines() if line}

    def test_help_and_manual_list_the_same(self):
        for command in COMMANDS:
            self.assertEqual(self.options_in_help(command), self.options_in_manual(command))

    def test_help_and_bash_completion_list_the_same(self):
        for command in COMMANDS:
            offered = self.complete(command, "--") - {"--help"}
            self.assertEqual(offered, self.options_in_help(command)[0])
            self.assertEqual(len(offered), len(set(offered)))

    def test_help_and_zsh_completion_list_the_same(self):
        script = self.run_ok("--completion", "zsh").stdout
        for command in COMMANDS:
            case = re.search(rf"^        {command}\)(.*?);;$", script, re.M | re.S).group(1)
            offered = set(re.findall(r"'(--[\w-]+)=?\[", case)) - {"--help"}
            self.assertEqual(offered, self.options_in_help(command)[0])

    def test_the_parser_knows_every_option_of_the_help(self):
        for command in COMMANDS:
            for option in self.options_in_help(command)[0]:
                done = self.call(
                    command, "absent.hgr", "absent.part"[: 99 * (command == "verify")], option, "x"
                )
                self.assertNotIn("The following argument was not expected: " + option, done.stderr)

    def test_choices_are_completed_and_accepted(self):
        help_text = unfolded(self.run_ok("partition", "--help").stdout)
        for option in ("--matching", "--refine", "--vcycle", "--reconst", "--preset"):
            offered = self.complete("partition", option, "")
            self.assertGreater(len(offered), 1)
            line = re.search(rf"{option} \w+ +(.*)", help_text).group(1)
            for word in offered:
                self.assertRegex(line, rf"\b{word}\b")
                self.fails(5, "absent", "partition", "absent", "-k", 2, option, word)
        self.assertEqual(self.complete("partition", "--matching", "h"), {"hfc", "hedge"})

    def test_bash_completes_commands_and_files(self):
        self.file("some.hgr", "")
        self.assertEqual(self.complete("ver"), {"verify"})
        self.assertEqual(self.complete("lint", "so"), {"some.hgr"})
        self.assertEqual(self.complete("partition", "-o", "so"), {"some.hgr"})
        self.assertEqual(self.complete("partition", "-k", ""), set())

    def test_bash_completes_behind_an_equals_sign(self):
        self.assertEqual(self.complete("partition", "--preset", "="), {"fast", "default", "best"})
        self.assertEqual(self.complete("partition", "--preset", "=", "b"), {"best"})

    def test_bash_completes_names_with_blanks(self):
        self.file("two words.hgr", "")
        self.assertEqual(self.complete("lint", "two"), {"two words.hgr"})

    def test_help_and_manual_tell_the_same_presets_and_statuses(self):
        page = self.run_ok("--man").stdout.replace("\\-", "-").replace("\n", " ").lower()
        for words, least in ((("partition", "--help"), 3), (("--help",), 9)):
            text = unfolded(self.run_ok(*words).stdout)
            rows = re.findall(r"^  (\w[\w, ]*?)  +(.*)$", text.split(":\n")[-1], re.M)
            self.assertEqual(len(rows), least)
            for name, meaning in rows:
                self.assertIn(f"\\fb{name}\\fr {meaning.lower()}.", page)

    def test_the_defaults_of_the_help_are_those_of_the_parser(self):
        self.example("fifo.hgr")
        answer = self.json_of("partition", "fifo.hgr", "-k", 2, "-o", "out", "--json", "-")
        text = unfolded(self.run_ok("partition", "--help").stdout)
        for option in (
            "imbalance",
            "preset",
            "runs",
            "matching",
            "refine",
            "vcycle",
            "seed",
            "starts",
            "timeout",
        ):
            told = re.search(rf"--{option} \w+ .*\[(\w+)\]", text).group(1)
            value = answer["options"][option]
            self.assertEqual(told, f"{value:g}" if isinstance(value, float) else str(value))

    @unittest.skipUnless(shutil.which("zsh"), "zsh is not installed")
    def test_zsh_accepts_its_completion(self):
        script = self.run_ok("--completion", "zsh").stdout
        subprocess.run(["zsh", "-n"], input=script, text=True, check=True)

    def zsh_offers(self, line):
        script = pathlib.Path(__file__).with_name("offered.zsh")
        done = subprocess.run(
            ["zsh", "-f", script, self.folder, line],
            capture_output=True,
            text=True,
            check=True,
            timeout=600,
        )
        return set(done.stdout.splitlines())

    @unittest.skipUnless(shutil.which("zsh"), "zsh is not installed")
    def test_zsh_offers_what_bash_offers(self):
        self.file("_zorpelx", self.run_ok("--completion", "zsh").stdout)
        self.assertEqual(self.zsh_offers("zorpelx "), set(COMMANDS))
        for command in COMMANDS:
            self.assertEqual(self.zsh_offers(f"zorpelx {command} -"), self.complete(command, "-"))
        for words in ("partition --preset", "partition --matching", "verify --format"):
            offered = self.complete(*words.split(), "")
            self.assertGreater(len(offered), 2)
            self.assertEqual(self.zsh_offers(f"zorpelx {words} "), offered)
            self.assertEqual(self.zsh_offers(f"zorpelx {words}="), offered)
        self.assertEqual(self.zsh_offers("zorpelx lint _z"), {"_zorpelx"})

    @unittest.skipUnless(shutil.which("man"), "man is not installed")
    def test_the_manual_page_has_no_errors(self):
        done = subprocess.run(
            ["man", "--warnings", "-l", "-"],
            capture_output=True,
            text=True,
            input=self.run_ok("--man").stdout,
            env={"LC_ALL": "C.UTF-8", "MANROFFSEQ": "", "MANWIDTH": "100", "PATH": "/usr/bin:/bin"},
        )
        self.assertEqual(done.stderr, "")
        for section in ("PRESETS", "EXIT STATUS", "RULES"):
            self.assertIn(f"\n{section}\n", done.stdout)

    @unittest.skipUnless(shutil.which("mandoc"), "mandoc is not installed")
    def test_the_manual_page_pleases_a_style_checker(self):
        words = ["mandoc", "-T", "lint", "-W", "style"]
        page = self.run_ok("--man").stdout
        done = subprocess.run(words, input=page, capture_output=True, text=True)
        self.assertEqual((done.stdout, done.stderr), ("", ""))

    def test_the_copies_in_the_source_are_up_to_date(self):
        """Made again by the target zorpelx_texts."""
        for words, name in {
            ("--man",): "docs/man/zorpelx.1",
            ("--completion", "bash"): "completions/zorpelx",
            ("--completion", "zsh"): "completions/_zorpelx",
        }.items():
            copy = (EXAMPLES.parent / name).read_text()
            self.assertEqual(self.run_ok(*words).stdout, copy, name)

    def test_every_status_of_the_manual_is_a_number(self):
        page = self.run_ok("--man").stdout
        section = re.search(r"^\.SH EXIT STATUS\n(.*?)^\.SH ", page, re.M | re.S).group(1)
        self.assertEqual(
            re.findall(r"\\fB(.*?)\\fR", section),
            ["0", "1", "2", "3", "4", "5", "6", "124", "130, 143"],
        )


if __name__ == "__main__":
    unittest.main()
