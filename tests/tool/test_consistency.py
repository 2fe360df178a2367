# SPDX-License-Identifier: MIT
# Every command and option of the program stands in its help, its man page and each completion, and
# none stands there that the program does not have.
import os
import re
import shutil
import subprocess
import unittest

from notebooks import QPS, SOURCE, ToolTest, run

COMMANDS = {"sheets", "info", "text", "csv", "json", "html", "xlsx", "items"}
LEFT_OUT = {"xlsx"} - set(run("--help").stdout.decode().split())  # without its library
OPTION = re.compile(r"(?<![\w-])--?[A-Za-z][a-z0-9-]*")


def help_options(*command):
    """The options at the starts of the help's lines."""
    text = run(*command, "--help").stdout.decode()
    return {option for line in text.splitlines() if line.startswith("  -")
            for option in OPTION.findall(line[:30].split("  ")[1])}


def source(name):
    with open(os.path.join(SOURCE, "tool", name), encoding="utf-8") as file:
        return file.read()


def shell(program, script):
    return subprocess.run([program, "-c", script], cwd=os.path.join(SOURCE, "tool/completions"),
                          stdout=subprocess.PIPE, check=True, timeout=60).stdout.decode()


class Options(ToolTest):
    @classmethod
    def setUpClass(cls):
        cls.options = {command: help_options(command) for command in COMMANDS - LEFT_OUT}


class Consistency(Options):
    def test_the_help_lists_every_command(self):
        text = run("--help").stdout.decode()
        self.assertEqual(set(re.findall(r"^  ([a-z]+) ", text, re.M)), COMMANDS - LEFT_OUT)
        self.assertEqual(help_options(), {"-h", "--help", "-V", "--version"})
        self.assertGreaterEqual(min(len(options) for options in self.options.values()), 9)

    def test_man_page(self):
        page = source("man/qps.1").replace("\\-", "-")
        commands = page.split(".SH COMMANDS")[1].split(".SH OPTIONS")[0]
        self.assertEqual(set(re.findall(r"^\.TP\n\.B ([a-z]+)$", commands, re.M)), COMMANDS)
        sections = dict(part.split("\n", 1) for part in
                        page.split(".SH EXIT STATUS")[0].split("\n.SS ")[1:])
        described = {name: {option for line in re.findall(r"^\.TP\n\\fB(.*)", text, re.M)
                            for option in OPTION.findall(line.replace("\\fR", " ").replace("\\fB", " "))}
                     for name, text in sections.items()}
        for command, options in self.options.items():
            wanted = described["All commands"] | {"-h", "--help"}
            if command in ("csv", "text"):
                wanted = wanted | described["csv and text"]
            if command in ("csv", "json", "xlsx"):
                wanted = wanted | described[command]
            self.assertEqual(options, wanted, command)


class Completions(Options):
    def test_bash_completion(self):
        for command, options in self.options.items():
            out = shell("bash", f"source ./qps.bash; COMP_WORDS=(qps {command} -); COMP_CWORD=2; _qps;"
                                'echo "${COMPREPLY[@]}"')
            self.assertEqual(set(out.split()), options, command)
        for words, expected in (("", COMMANDS | {"help", "--help", "--version", "-h", "-V"}), ("help ", COMMANDS)):
            out = shell("bash", f'source ./qps.bash; COMP_WORDS=(qps {words} ""); COMP_CWORD={1 + len(words.split())};'
                                '_qps; echo "${COMPREPLY[@]}"')
            self.assertEqual(set(out.split()), expected)

    @unittest.skipUnless(shutil.which("fish"), "fish is not installed")
    def test_fish_completion(self):
        for command, options in self.options.items():
            out = shell("fish", f'source qps.fish; complete -C"qps {command} -"')
            self.assertEqual({line.split("\t")[0] for line in out.splitlines()}, options, command)
        for words, expected in (("", COMMANDS | {"help"}), ("help ", COMMANDS)):
            out = shell("fish", f'source qps.fish; complete -C"qps {words}"')
            self.assertEqual({line.split("\t")[0] for line in out.splitlines()}, expected)

    @unittest.skipUnless(shutil.which("zsh"), "zsh is not installed")
    def test_zsh_completion(self):
        # The completion system's functions are replaced by ones that print what they are given.
        for command, options in self.options.items():
            out = shell("zsh", "_arguments() { if [[ $1 = -C ]]; then state=argument;"
                               f'else print -rl -- "$@"; fi }}; words=({command}); source ./_qps')
            self.assertEqual(set(OPTION.findall(re.sub(r"[[:].*", "", out))), options, command)
        out = shell("zsh", "_arguments() { state=command }; _describe() { print -rl -- ${(P)2} };"
                           "source ./_qps")
        self.assertEqual({line.split(":")[0] for line in out.splitlines()}, COMMANDS | {"help"})


class Readme(ToolTest):
    def test_the_readme_shows_what_its_commands_print(self):
        with open(os.path.join(SOURCE, "README.md"), encoding="utf-8") as file:
            tour = file.read().split("## Tour of the tool")[1].split("\n## ")[0]
        shutil.copytree(os.path.join(SOURCE, "examples"), self.path("examples"))
        shutil.copy(os.path.join(SOURCE, "LICENSE"), self.folder)
        path = os.path.dirname(QPS[0]) + os.pathsep + os.environ["PATH"]
        steps = re.findall(r"^\$ (.*)\n((?:(?!\$ |```).*\n)*)", tour, re.M)
        self.assertGreater(len(steps), 8)
        for command, shown in steps:
            printed = subprocess.run(["bash", "-c", command], cwd=self.folder, timeout=60, check=True,
                                     env={**os.environ, "PATH": path, "LC_ALL": "C.UTF-8"},
                                     stdout=subprocess.PIPE, stderr=subprocess.STDOUT).stdout
            self.assertEqual(printed.decode(), shown, command)


if __name__ == "__main__":
    unittest.main()
