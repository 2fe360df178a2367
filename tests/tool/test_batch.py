# SPDX-License-Identifier: MIT
# Runs over many notebooks: stopped and resumed, split in shards, side by side, and what a manifest
# says of them.
import hashlib
import json
import os
import pathlib
import pty
import random
import shutil
import signal
import subprocess
import time
import unittest

from notebooks import QPS, ToolTest, label, notebook, run, sheet


def book(number):
    """Some have two worksheets, and every fiftieth is damaged."""
    cells = [label(c, r, b"%d" % (number * r)) for r in range(40) for c in range(5)]
    data = notebook(*[sheet(*cells, name=b"S%d" % n, number=n) for n in range(1 + number % 2)])
    return data[:-30] if number % 50 == 7 else data


def tree(folder):
    return {str(path.relative_to(folder)): path.read_bytes()
            for path in pathlib.Path(folder).rglob("*") if path.is_file()}


def lines(path):
    return [json.loads(line) for line in pathlib.Path(path).read_text("utf-8").splitlines()]


class Batch(ToolTest):
    COUNT = 500

    def setUp(self):
        super().setUp()
        for number in range(self.COUNT):
            folder = f"in/{number % 7}"
            os.makedirs(self.path(folder), exist_ok=True)
            self.file(book(number), f"{folder}/{number // 7}.wb2")
        sources = sorted(str(p.relative_to(self.folder)) for p in pathlib.Path(self.path("in")).rglob("*.wb2"))
        self.sources = sources
        self.file("".join(s + "\0" for s in sources).encode(), "list")
        self.assertEqual(self.batch("whole", "--manifest", "whole.json").returncode, 5)
        self.whole = tree(self.path("whole"))

    def command(self, out, *args):
        return ["csv", "--files0-from", "list", "--output-dir", out, *args]

    def batch(self, out, *args):
        return run(*self.command(out, *args), cwd=self.folder)

    def start(self, out, *args):
        return subprocess.Popen([*QPS, *self.command(out, *args)], cwd=self.folder, stderr=subprocess.DEVNULL)

    def test_a_run_that_is_killed_can_be_resumed(self):
        for args in (["--skip-existing"], ["--skip-existing", "--manifest", "killed.json"]):
            shutil.rmtree(self.path("killed"), ignore_errors=True)
            for _ in range(10):
                process = self.start("killed", *args)
                time.sleep(random.uniform(0.002, 0.03))
                process.kill()
                process.wait()
            self.assertEqual(self.batch("killed", *args).returncode, 5)
            self.assertEqual(tree(self.path("killed")), self.whole)
        self.assertEqual(sorted(line["source"] for line in lines(self.path("killed.json"))), self.sources)
        key = lambda line: line["source"]
        self.assertEqual(sorted(lines(self.path("killed.json")), key=key), lines(self.path("whole.json")))

    def test_side_by_side(self):
        processes = [self.start("both") for _ in range(2)]
        self.assertEqual([process.wait(60) for process in processes], [5, 5])
        self.assertEqual(tree(self.path("both")), self.whole)

    def test_shards(self):
        found = []
        for shard in range(1, 4):
            self.batch("shards", "--shard", f"{shard}/3", "--manifest", f"{shard}.json")
            found += lines(self.path(f"{shard}.json"))
        self.assertEqual(tree(self.path("shards")), self.whole)
        self.assertEqual(sorted(line["source"] for line in found), self.sources)

    def test_lines_that_no_run_has_written(self):
        line = {"outcome": "done", "command": "csv", "source": self.sources[0]}
        odd = [{}, [], line, {**line, "outputs": {}}, {**line, "outputs": []}, {**line, "outputs": [7]},
               {**line, "outputs": ["none"]}]
        pathlib.Path(self.path("odd.json")).write_text("x\n" + "".join(json.dumps(one) + "\n" for one in odd))
        self.assertEqual(self.batch("odd", "--skip-existing", "--manifest", "odd.json").returncode, 5)
        self.assertEqual([line["source"] for line in lines(self.path("odd.json"))], self.sources)

    def test_what_a_manifest_says(self):
        found = lines(self.path("whole.json"))
        self.assertEqual([line["source"] for line in found], self.sources)
        self.assertEqual(sorted(name for line in found for name in line["outputs"]), sorted(self.whole))
        for line in found[::9]:
            data = pathlib.Path(self.path(line["source"])).read_bytes()
            self.assertEqual(line["size"], len(data))
            if len(QPS) == 1 or line["sha256"]:  # programs of other machines may have no library for it
                self.assertEqual(line["sha256"], hashlib.sha256(data).hexdigest())
        damaged = [line for line in found if line["outcome"] != "done"]
        self.assertEqual(len(damaged), 10)
        self.assertEqual({(line["outcome"], line["status"], line["cells"]) for line in damaged}, {("failed", 5, None)})
        self.assertEqual({line["pronom"] for line in found}, {"fmt/835"})
        self.assertEqual({line["message"] for line in found if line["outcome"] == "done"}, {None})
        pathlib.Path(self.path("odd.wb2")).write_bytes(notebook(sheet(), version=0x1234))
        run("csv", "--manifest", self.path("odd.json"), self.path("odd.wb2"))
        self.assertIsNone(lines(self.path("odd.json"))[0]["pronom"])
        self.assertEqual({line["cells"] for line in found if line["outcome"] == "done"}, {200, 400})

    def test_a_signal_leaves_no_temporary_file(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            for _ in range(5):
                process = self.start("signal")
                time.sleep(random.uniform(0.002, 0.03))
                process.send_signal(number)
                self.assertIn(process.wait(), (-number, 5))
                self.assertEqual([name for name in tree(self.path("signal")) if ".tmp" in name]
                                 if os.path.exists(self.path("signal")) else [], [])

    def test_the_last_line_on_a_terminal(self):
        os.remove(self.path("whole/in/0/0.wb2.S0.csv"))
        master, slave = pty.openpty()
        subprocess.run([*QPS, *self.command("whole", "--skip-existing")], cwd=self.folder, stderr=slave, check=False)
        os.close(slave)
        self.assertTrue(os.read(master, 100000).endswith(b"qps: 1 done, 489 skipped, 10 failed\r\n"))
        os.close(master)


if __name__ == "__main__":
    unittest.main()
