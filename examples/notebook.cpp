// SPDX-License-Identifier: MIT
//
// The worksheets of a notebook and their cells (row, column, text, value), with the class Notebook.
#include <iomanip>
#include <iostream>

#include <qpsreader/host/notebook.hpp>

// What a cell holds: a number to 15 digits, a date as its serial.
static void print(const qps::CellValue& value) {
  if (const auto number = value.number()) std::cout << std::setprecision(15) << *number;
  if (const auto text = value.text()) std::cout << *text;
  if (value.kind() == qps::CellValue::Kind::kError) std::cout << "ERR";
}

int main(int argc, char** argv) {
  const auto notebook = qps::Notebook::open(argc == 2 ? argv[1] : "budget.wb2");
  if (!notebook) {
    std::cerr << notebook.error().message << '\n';
    return 1;
  }
  for (const qps::Sheet& sheet : notebook->sheets()) {
    std::cout << "== " << sheet.name << '\n';
    auto items = notebook->items(sheet);
    for (const qps::Item& item : items)
      if (const auto cell = item.cell()) {
        std::cout << cell->row() << '\t' << cell->column() << '\t' << cell->text() << '\t';
        print(cell->value());
        std::cout << '\n';
      }
    if (const auto error = items.error()) {
      std::cerr << sheet.name << ": " << error->message << '\n';
      return 1;
    }
  }
}
