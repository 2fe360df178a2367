// SPDX-License-Identifier: MIT
//
// A notebook in memory with a host and a reader over it, made when the first run asks for it.
#ifndef QPSREADER_BENCH_SUBJECT_H
#define QPSREADER_BENCH_SUBJECT_H

#include <functional>
#include <memory>
#include <span>
#include <utility>

#include "bench/memory_host.h"
#include "bench/reading.h"
#include "tests/support/notebook_builder.h"

namespace qps::bench {

struct Subject {
  explicit Subject(test::Bytes file) : bytes(std::move(file)), host(bytes), reading(host) {
    reading.list();
  }

  test::Bytes bytes;
  MemoryHost host;
  Reading reading;
};

class LazySubject {
 public:
  explicit LazySubject(std::function<test::Bytes()> make) : make_(std::move(make)) {}

  Subject& operator*() {
    if (subject_ == nullptr) subject_ = std::make_unique<Subject>(make_());
    return *subject_;
  }
  Subject* operator->() { return &**this; }

 private:
  std::function<test::Bytes()> make_;
  std::unique_ptr<Subject> subject_;
};

using SubjectPointer = std::shared_ptr<LazySubject>;

inline SubjectPointer lazySubject(std::function<test::Bytes()> make) {
  return std::make_shared<LazySubject>(std::move(make));
}

}  // namespace qps::bench

#endif  // QPSREADER_BENCH_SUBJECT_H
