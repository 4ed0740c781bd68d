// Queries as the commands take them: parsed with the index's word characters,
// with notes about words the index cannot hold.
#pragma once

#include <string>

#include "query_parser.h"
#include "reading_session.h"

namespace kurvo_cli {

WordCharacters wordCharactersOf(const IndexOptions &options);
// Throws HostError with the parser's reason.
QueryNode parseUserQuery(const std::string &text, const IndexOptions &options, bool quiet);
// Tells on stderr about terms too short, too long or skipped by the index.
void noteUnsearchableTerms(const QueryNode &query, ReadingSession &rs, bool quiet);

}  // namespace kurvo_cli
