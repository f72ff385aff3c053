// fuzz/sound.h - what every reader of hypergraphs keeps to, whatever the text.
// SPDX-License-Identifier: MIT
#pragma once

#include "formats/failure.h"
#include "formats/formats.h"

#include <string>

namespace kapris_formats
{

typedef Hgr (*Reader)(std::string_view text, Problems *problems);

// The name in their messages is "x".
Hgr TryHgr(std::string_view text, Problems *problems);
Hgr TryPatoh(std::string_view text, Problems *problems);
Hgr TryMtx(std::string_view text, Problems *problems); // rows are nets, weights as the format has them
Hgr TryCnf(std::string_view text, Problems *problems); // the dual model
Hgr TryWcnf(std::string_view text, Problems *problems);
Hgr TryGraph(std::string_view text, Problems *problems);
Hgr TryYosys(std::string_view text, Problems *problems);     // with its names
Hgr TryBookshelf(std::string_view text, Problems *problems); // four texts with null bytes between them

// Empty if the record is what kapris_api.h asks for.
std::string FirstFlaw(const Hgr &hgr);

// The first fault of the text, or nothing and the record.
std::string FirstFault(Reader reader, std::string_view text, Problems *problems, Hgr *hgr);

} // namespace kapris_formats
