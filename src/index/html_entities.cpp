// The index's table of named HTML character references and their decoding.
// Tables laid out by hand:
// clang-format off
#include "index/kurvo_index.h"

namespace {

// Names run in byte order; a name listed with 0 continues from the byte of
// the name before it. "Iuml" repeats 206 and the c with cedilla is spelled
// "cedil": both are what existing indexes were built with.
struct EntityRun {
  const char *name;
  int byte;
};

const EntityRun kEntityRuns[] = {
    {"quot", 34},    {"amp", 38},     {"lt", 60},      {"gt", 62},      {"apos", 39},
    {"Agrave", 192}, {"Aacute", 0},   {"Acirc", 0},    {"Atilde", 0},   {"Auml", 0},
    {"Aring", 0},    {"AElig", 0},    {"Ccedil", 0},   {"Egrave", 0},   {"Eacute", 0},
    {"Ecirc", 0},    {"Euml", 0},     {"Igrave", 0},   {"Iacute", 0},   {"Icirc", 0},
    {"Iuml", 206},
    {"ETH", 208},    {"Ntilde", 0},   {"Ograve", 0},   {"Oacute", 0},   {"Ocirc", 0},
    {"Otilde", 0},   {"Ouml", 0},
    {"Oslash", 216}, {"Ugrave", 0},   {"Uacute", 0},   {"Ucirc", 0},    {"Uuml", 0},
    {"Yacute", 0},   {"THORN", 0},    {"szlig", 0},    {"agrave", 0},   {"aacute", 0},
    {"acirc", 0},    {"atilde", 0},   {"auml", 0},     {"aring", 0},    {"aelig", 0},
    {"cedil", 231},
    {"egrave", 232}, {"eacute", 0},   {"ecirc", 0},    {"euml", 0},     {"igrave", 0},
    {"iacute", 0},   {"icirc", 0},    {"iuml", 0},     {"eth", 0},      {"ntilde", 0},
    {"ograve", 0},   {"oacute", 0},   {"ocirc", 0},    {"otilde", 0},   {"ouml", 0},
    {"oslash", 248}, {"ugrave", 0},   {"uacute", 0},   {"ucirc", 0},    {"uuml", 0},
    {"yacute", 0},   {"thorn", 0},    {"yuml", 0},
};

}  // namespace

void CKurvoIndex::fillEntities() {
  int byte = 0;
  for (const EntityRun &run : kEntityRuns) {
    byte = run.byte != 0 ? run.byte : byte + 1;
    entities[run.name] = static_cast<unsigned char>(byte);
  }
}

unsigned char CKurvoIndex::htmlChar(const char *reference) const {
  if (reference[0] == '#') {
    // Numeric reference: decimal digits up to the first non-digit, modulo 256.
    unsigned value = 0;
    for (const char *p = reference + 1; *p >= '0' && *p <= '9'; ++p)
      value = (value * 10 + static_cast<unsigned>(*p - '0')) & 0xFF;
    return static_cast<unsigned char>(value);
  }
  auto it = entities.find(reference);
  return it == entities.end() ? ' ' : it->second;
}
