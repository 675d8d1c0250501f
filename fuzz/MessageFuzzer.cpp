// Arbitrary bytes as a message: parse, walk every element through the codec (values of every
// type, schema types, derived look-up), write a record back and serialise.
#include <map>
#include <vector>

#include "FuzzTarget.h"
#include "MBQMessage/MBQMessage.h"

namespace {

void walk(const MBQ::MBQMessageIterator& it, int depth) {
  if (depth > 64) return;
  std::string text, type;
  it.getText(text);
  it.getSchemaType(type);
  long long wide = 0;
  double real = 0;
  bool flag = false;
  MBQ::MBQReaderValue<long long>()(it, wide);
  MBQ::MBQReaderValue<double>()(it, real);
  MBQ::MBQReaderValue<bool>()(it, flag);
  std::map<std::string, std::string> map;
  MBQ::MBQReaderMap(1017, MBQ::MBQReaderOptional, MBQ::MBQReaderID(MBQ::MBQReaderValue<std::string>(), 1010),
                    MBQ::MBQReaderID(MBQ::MBQReaderValue<std::string>(), 1018))(it, map);
  std::vector<int> numbers;
  MBQ::MBQReaderList(MBQ::MBQReaderValue<int>(), 1323, MBQ::MBQReaderOptional)(it, numbers);
  if (it.descendFirst() == 0) {
    do walk(it, depth + 1);
    while (it.nextSibling() == 0);
    it.up();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  MBQ::MBQMessage message;
  if (message.parse(reinterpret_cast<const char*>(data), size) != 0) return 0;
  auto it = message.iterator();
  walk(*it, 0);
  MBQ::MBQMessage copy;
  copy.iterator()->importChildren(*it);
  it->setValue(1010, inputText(data, size));
  it->setSchemaType("fuzzType", "urn:fuzz");
  MBQ::MBQMessage reread;
  reread.parse(message.toString());
  return 0;
}
