// Writes a few resource records into a message, prints its XML, reads the text back into
// records and prints them: the round trip every operator message takes.
#include <cstdio>
#include <set>
#include <string>

#include "MBQCore/MBQError.h"
#include "MBQFunctionalityCore/MBQQoS.h"
#include "MBQMessage/MBQMessage.h"

int main() {
  const std::set<MBQ::MBQQoS> resources{
      MBQ::MBQQoS("numproc", 256, 256),
      MBQ::MBQQoS("diskblocks", 1048576, 1153434),
      MBQ::MBQQoS("cpuweight", 500),
  };

  MBQ::MBQMessage message("venv_config");
  auto writer = message.iterator();
  if (MBQ::MBQWriterList(MBQ::MBQQoS::Writer(), 1476)(*writer, resources) != 0) {
    std::fprintf(stderr, "ktr-message-demo: write failed: %s\n", MBQ::getErrorMessage().c_str());
    return 1;
  }
  const std::string text = message.toString(true);
  std::printf("%s", text.c_str());

  MBQ::MBQMessage received;
  if (received.parse(text) != 0) {
    std::fprintf(stderr, "ktr-message-demo: parse failed: %s\n", MBQ::getErrorMessage().c_str());
    return 1;
  }
  std::set<MBQ::MBQQoS> back;
  if (MBQ::MBQReaderSet(MBQ::MBQQoS::Reader(), 1476)(*received.iterator(), back) != 0 || back != resources) {
    std::fprintf(stderr, "ktr-message-demo: read back differs: %s\n", MBQ::getErrorMessage().c_str());
    return 1;
  }
  for (const auto& qos : back) std::printf("%s=%s\n", qos.getId().c_str(), qos.toString().c_str());
  return 0;
}
