// SPDX-License-Identifier: MIT
//
// The worksheets of a notebook and their cells (row, column, text), with the class Notebook.
#include <iostream>

#include <qpsreader/host/notebook.hpp>

int main(int argc, char** argv) {
  const auto notebook = qps::Notebook::open(argc == 2 ? argv[1] : "budget.wb2");
  if (!notebook) {
    std::cerr << notebook.error().message << '\n';
    return 1;
  }
  for (const qps::Sheet& sheet : notebook->sheets()) {
    std::cout << "== " << sheet.name << '\n';
    for (const qps::Item& item : notebook->items(sheet))
      if (const auto cell = item.cell())
        std::cout << cell->row() << '\t' << cell->column() << '\t' << cell->text() << '\n';
  }
}
