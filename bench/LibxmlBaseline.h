#pragma once

// The baseline every message benchmark is measured against: libxml2 alone parsing a document
// and serialising it again, with nothing of ours in between.

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <string>

inline void bareParseAndSerialise(const std::string& text) {
  xmlDocPtr doc = xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, "UTF-8", XML_PARSE_NONET);
  xmlChar* out = nullptr;
  int length = 0;
  xmlDocDumpFormatMemoryEnc(doc, &out, &length, "UTF-8", 0);
  benchmark::DoNotOptimize(out);
  xmlFree(out);
  xmlFreeDoc(doc);
}
