# SPDX-License-Identifier: MIT
"""Help, manual page, completions and parser hold the same options: they come from one table."""

import pathlib
import re
import shutil
import subprocess
import unittest

from calls import EXAMPLES, Case, unfolded

COMMANDS = (
    "partition", "verify", "lint", "stats", "replay", "convert", "annotate", "sweep", "compare", "explain",
    "report", "merge"
)


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

    def test_help_fits_80_columns(self):
        for words in ((), *((command,) for command in COMMANDS)):
            text = self.run_ok(*words, "--help").stdout
            self.assertLess(max(map(len, text.splitlines())), 80)
            self.assertGreater(len(text.splitlines()), 10)
            self.assertNotRegex(text, r"(?m) $")

    def test_help_is_a_command_too(self):
        for words in (("help",), ("help", "help"), ("-h",)):
            self.assertEqual(self.run_ok(*words).stdout, self.run_ok("--help").stdout)
        for command in COMMANDS:
            text = self.run_ok(command, "--help").stdout
            self.assertTrue(text.startswith(f"Usage: zorpelx {command} "))
            for words in (("help", command), (command, "-h"), (command, "absent.hgr", "--help")):
                self.assertEqual(self.run_ok(*words).stdout, text)
        self.fails(2, "there is no command 'lnit'; did you mean 'lint'?", "help", "lnit")
        self.fails(2, "help takes one command", "help", "lint", "stats")

    def test_the_version_has_a_short_option(self):
        self.assertEqual(self.run_ok("-V").stdout, self.run_ok("--version").stdout)

    def test_the_manual_page_behind_a_command(self):
        page = self.run_ok("--man").stdout
        for command in COMMANDS:
            self.assertEqual(self.run_ok(command, "--man").stdout, page)
        self.assertEqual(self.run_ok("partition", "absent.hgr", "-k", 2, "--man").stdout, page)
        self.fails(5, "--man: No such file", "stats", "--", "--man")

    def test_misspelt_words_get_a_suggestion(self):
        for line, sentence in {
            "partitoin g.hgr -k 2": "there is no command 'partitoin'; did you mean 'partition'?",
            "Lint g.hgr": "there is no command 'Lint'; did you mean 'lint'?",
            "stat g.hgr": "there is no command 'stat'; did you mean 'stats'?",
            "xyzzy": "there is no command 'xyzzy'\n",
            "--verison": "there is no option --verison; did you mean '--version'?",
            "partition g.hgr --npart 2": "there is no option --npart; did you mean '--nparts'?",
            "partition g.hgr -k 2 --epsilom=3": "no option --epsilom; did you mean '--epsilon'",
            "partition --outptu x g.hgr -k 2": "no option --outptu; did you mean '--output'?",
            "partition g.hgr -k 2 --refnie fm": "no option --refnie; did you mean '--refine'?",
            "partition g.hgr -k 2 --refine em": "none of fm, 1wayfm, eefm; did you mean 'fm'?",
            "partition g.hgr -k 2 --preset bets": "did you mean 'best'?",
            "verify g.hgr p --preset fast": "--preset is an option of partition\n",
            "stats g.hgr --xyzzy": "there is no option --xyzzy\n",
            "stats g.hgr -Z": "there is no option -Z\n",
            "lint --explain vertex-abov": "no rule 'vertex-abov'; did you mean 'vertex-above'?",
            "lint --explain emptynet": "there is no rule 'emptynet'",
        }.items():
            self.fails(2, sentence, *line.split())
        self.fails(2, "--nparts is required", "partition", "-o", "--force", "g.hgr")

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
                places = {"verify": 2, "replay": 2, "compare": 3}.get(command, 1)
                done = self.call(command, *["absent"] * places, option, "x")
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
        self.assertEqual(self.complete("h"), {"help"})
        self.assertEqual(self.complete("help", ""), set(COMMANDS))
        self.assertEqual(self.complete("help", "st"), {"stats"})
        self.assertEqual(self.complete("lint", "so"), {"some.hgr"})
        self.assertEqual(self.complete("partition", "-o", "so"), {"some.hgr"})
        self.assertEqual(self.complete("partition", "-k", ""), set())

    def test_bash_completes_behind_an_equals_sign(self):
        self.assertEqual(self.complete("partition", "--preset", "="), {"fast", "default", "best"})
        self.assertEqual(self.complete("partition", "--preset", "=", "b"), {"best"})

    def test_bash_completes_rules(self):
        heads = re.findall(
            r"^([HF]\d\d) ([\w-]+) ", self.run_ok("lint", "--explain", "all").stdout, re.M
        )
        self.assertGreater(len(heads), 40)
        words = {word for head in heads for word in head} | {"all"}
        self.assertEqual(self.complete("lint", "--explain", ""), words)
        self.assertEqual(self.complete("lint", "--explain", "vertex-ab"), {"vertex-above"})

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
            "epsilon",
            "objective",
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
        self.assertEqual(self.zsh_offers("zorpelx "), {*COMMANDS, "help"})
        self.assertEqual(self.zsh_offers("zorpelx help "), set(COMMANDS))
        for command in COMMANDS:
            self.assertEqual(self.zsh_offers(f"zorpelx {command} -"), self.complete(command, "-"))
        for words in (
            "partition --preset",
            "partition --matching",
            "verify --format",
            "lint --explain",
        ):
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
