// SPDX-License-Identifier: MIT
//
// The reader only says yes or no, and ends silently where a file is damaged. These functions look
// at the bytes afterwards and say why. Each is bounded by the bytes that are there: one look at the
// beginning, or one walk over record headers.
//
// `file` is a closed stream over the whole file; it is opened, used and closed again.
#ifndef QPSREADER_HOST_DIAGNOSIS_HPP
#define QPSREADER_HOST_DIAGNOSIS_HPP

#include <cstdint>
#include <optional>
#include <span>

#include <qpsreader/host_tables.h>
#include <qpsreader/host/expected.hpp>
#include <qpsreader/host/file_facts.hpp>
#include "host/host_services.hpp"

namespace qps {

// The kind of a file that begins with these bytes (512 are enough), as far as they tell.
FileKind fileKindOf(std::span<const unsigned char> begin);

// Why the reader could not list the worksheets of this file.
Error diagnoseListing(SSStream& file, HostServices& services);

// Reads what stands before the first worksheet. Fails with kProtected for a protected notebook.
Expected<NotebookFacts> readFacts(SSStream& file, HostServices& services);

// Whether the records cannot be followed to the end record, or a worksheet lacks its own. The first
// record up to there that no notebook has goes to `suspicion`, unless that is null.
std::optional<Error> findDamage(SSStream& file, HostServices& services,
                                std::optional<Error>* suspicion = nullptr);

// The same for one worksheet: whether its end record is reached from its start.
std::optional<Error> findSheetDamage(SSStream& file, HostServices& services,
                                     std::uint32_t startOffset);

}  // namespace qps

#endif  // QPSREADER_HOST_DIAGNOSIS_HPP
