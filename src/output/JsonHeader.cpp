#include "output/JsonHeader.h"

namespace {

// The name of the program in front of the version, in the message that holds both.
constexpr int kNameLength = 22;

}  // namespace

const char JsonHeader::VERSION[] = KNOB_VERSION;

JsonHeader::JsonHeader(const MessageHelper& messages)
    : version(messages.getResStr("NAME", VERSION).remove(0, kNameLength)),
      copyright(messages.getResStr("COPYRIGHT")) {}

std::array<kz::String, 4> JsonHeader::lines() const {
  return {"\n{", "\t\"title\": \"Configuration Utility\",", "\t\"version\": \"" + version + "\",",
          "\t\"copyright\": \"" + copyright + "\","};
}
