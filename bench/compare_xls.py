#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""compare_xls.py QPS: the time and the memory that a million cells take as CSV, as a notebook with the
program QPS, and as the same cells in a workbook of the same age (.xls) with Debian's readers of that
format. Takes python3-xlwt, python3-xlrd and catdoc; times are of the processor, the best of five runs.
"""
import multiprocessing
import os
import pathlib
import random
import subprocess
import sys
import tempfile

os.environ.update(QPS=sys.argv[1], QPS_SOURCE=str(pathlib.Path(__file__).resolve().parent.parent))
sys.path.insert(0, os.environ["QPS_SOURCE"] + "/tests/tool")
# pylint: disable=wrong-import-position
import xlwt  # noqa: E402
from notebooks import font, label, notebook, number, sheet, style  # noqa: E402

ROWS, COLUMNS = 50000, 20
RUNS = 5
# General, fixed, comma, date: the code here, the format there, and what the values are
FORMS = [(0x00, "General", lambda draw: draw(30000)), (0x12, "0.00", lambda draw: draw(10**7) / 100),
         (0x52, "#,##0.00", lambda draw: draw(10**8) / 100), (0x05, "DD-MMM-YY", lambda draw: 30000 + draw(20000))]
XLRD = """import xlrd
sheet = xlrd.open_workbook("book.xls").sheet_by_index(0)
for row in range(sheet.nrows):
    print(*sheet.row_values(row), sep=",")
"""


def make():
    draw = random.Random(7).randrange
    workbook = xlwt.Workbook()
    page = workbook.add_sheet("A")
    looks = [xlwt.easyxf(num_format_str=text) for _, text, _ in FORMS]
    cells = []
    for row in range(ROWS):
        for column in range(COLUMNS):
            form = (column + row) % 5
            if form == 4:
                text = f"label {draw(10**6):06}"
                cells.append(label(column, row, text.encode()))
                page.write(row, column, text)
            else:
                value = FORMS[form][2](draw)
                cells.append(number(column, row, float(value), form + 1))
                page.write(row, column, value, looks[form])
    styles = b"".join(style(form=code) for code, _, _ in FORMS)
    pathlib.Path("book.wb2").write_bytes(
        notebook(sheet(*cells, columns=COLUMNS, rows=ROWS), definitions=font() + styles))
    workbook.save("book.xls")


def cost(command):
    """Seconds of the processor, and the peak of memory in megabytes."""
    with subprocess.Popen(command, stdout=subprocess.DEVNULL) as process:
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{command[0]} failed")
    return usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1000


def main():
    tool = os.path.abspath(sys.argv[1])
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        # In a process of its own: the peak of a child begins with what its parent holds.
        maker = multiprocessing.Process(target=make)
        maker.start()
        maker.join()
        for name, command in (("qps csv", [tool, "csv", "book.wb2"]),
                              ("qps csv --values", [tool, "csv", "--values", "book.wb2"]),
                              ("xls2csv", ["xls2csv", "-d", "utf-8", "book.xls"]),
                              ("xlrd", [sys.executable, "-c", XLRD])):
            seconds, megabytes = min(cost(command) for _ in range(RUNS))
            print(f"{name:18}{seconds:7.3f} s{megabytes:7.1f} MB")
        os.chdir("/")


main()
