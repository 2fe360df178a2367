// SPDX-License-Identifier: MIT
//
// Cells: the mixes and the families against the floor that renders with std::to_chars, the growth
// with the number of cells and of worksheets, and the road through a compound document.
#include <string>

#include "bench/floor.h"
#include "bench/measure.h"
#include "bench/notebooks.h"
#include "bench/subject.h"
#include "tests/support/compound_writer.h"

namespace qps::bench {
namespace {

constexpr const char* kItems = "items";

struct Target {
  const char* deck;
  double atMost;
};

constexpr Target kTargets[] = {
    {"mix", 0.9}, {"numbers", 0.6}, {"dates", 0.8}, {"labels", 1.1}, {"user", 1.1},
};

SubjectPointer deckSubject(std::string_view deck, std::size_t cells, std::size_t sheets = 1,
                           Order order = Order::kShuffled) {
  return lazySubject([=] { return buildNotebook(*findDeck(deck), cells, sheets, order).bytes(); });
}

void takeItems(Subject& subject) {
  subject.host.dropTexts();
  subject.reading.items(subject.reading.offset());
}

void runFloor(Subject& subject) {
  subject.host.dropTexts();
  subject.host.stream()->open(subject.host.stream());
  floorItems(subject.host.stream(), subject.reading.offset(), MemoryHost::itemAlloc, &subject.host);
}

void addPair(std::vector<Measure>& measures, const std::string& group, const std::string& name,
             std::size_t cells, const SubjectPointer& subject, double atMost = 0) {
  const std::string floorGroup = kToCharsFloor;
  measures.push_back(
      {.group = floorGroup, .name = name, .units = cells, .isOnlyFloor = true, .run = [=] {
         runFloor(**subject);
       }});
  measures.push_back({.group = group,
                      .name = name,
                      .units = cells,
                      .floor = floorGroup + "/" + name,
                      .atMost = atMost,
                      .run = [=] { takeItems(**subject); }});
}

}  // namespace

void addItemMeasures(std::vector<Measure>& measures, std::size_t cells) {
  const std::string floor = std::string(kToCharsFloor) + "/mix";
  SubjectPointer mix;
  for (const Target& target : kTargets) {
    const SubjectPointer subject = deckSubject(target.deck, cells);
    if (mix == nullptr) mix = subject;
    addPair(measures, kItems, target.deck, cells, subject, target.atMost);
  }
  addPair(measures, kItems, "mix, a family a column", cells,
          deckSubject("mix", cells, 1, Order::kColumns));
  measures.push_back({.group = "records",
                      .name = "listing",
                      .units = cells,
                      .floor = floor,
                      .atMost = 0.12,
                      .run = [=] { (*mix)->reading.list(); }});
  measures.push_back({.group = "records",
                      .name = "a read and a seek, and nothing else",
                      .units = cells,
                      .floor = floor,
                      .run = [=] {
                        SSStream* stream = (*mix)->host.stream();
                        stream->open(stream);
                        floorHeaders(stream);
                      }});
  measures.push_back({.group = "records",
                      .name = "the walk of the floor",
                      .units = cells,
                      .floor = floor,
                      .run = [=] {
                        SSStream* stream = (*mix)->host.stream();
                        stream->open(stream);
                        floorWalk(stream, (*mix)->reading.offset());
                      }});
  for (const FamilyRow& row : kFamilies) {
    const std::string name(row.name);
    addPair(measures, "families", name, cells, deckSubject(row.name, cells));
  }
  const SubjectPointer compound = lazySubject([=] {
    const test::Bytes plain = buildNotebook(*findDeck("mix"), cells).bytes();
    return test::writeCompound({}, {{"PerfectOffice_MAIN", plain}});
  });
  measures.push_back({.group = "in a compound document",
                      .name = "mix",
                      .units = cells,
                      .floor = std::string(kItems) + "/mix",
                      .run = [=] { takeItems(**compound); }});
}

void addGrowthMeasures(std::vector<Measure>& measures, std::size_t cells) {
  constexpr double kFlat = 1.3;
  const std::string group = "growth";
  std::string first;
  const auto add = [&](const std::string& name, std::size_t count, std::size_t sheets) {
    const SubjectPointer subject = deckSubject("mix", count, sheets);
    measures.push_back({.group = group,
                        .name = name,
                        .units = count,
                        .floor = first.empty() ? "" : group + "/" + first,
                        .atMost = first.empty() ? 0 : kFlat,
                        .run = [=] {
                          Reading& reading = (*subject)->reading;
                          (*subject)->host.dropTexts();
                          const std::uint32_t listed = reading.list();
                          for (std::uint32_t i = 0; i < listed; ++i)
                            reading.items(reading.offset(i));
                        }});
    if (first.empty()) first = name;
  };
  for (std::size_t count = 10'000; count <= cells; count *= 10)
    add(std::to_string(count) + " cells, 1 sheet", count, 1);
  first.clear();
  for (std::size_t sheets = 1; sheets <= 256; sheets *= 4) {
    add(std::to_string(cells / 4) + " cells, " + std::to_string(sheets) +
            (sheets == 1 ? " sheet" : " sheets"),
        cells / 4, sheets);
  }
}

}  // namespace qps::bench
