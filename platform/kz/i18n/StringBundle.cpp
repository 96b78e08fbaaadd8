#include "kz/i18n/StringBundle.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <list>
#include <map>
#include <optional>
#include <sys/stat.h>
#include <utility>

#include "kz/Exception.h"
#include "kz/Utf8.h"
#include "kz/io/FileDescriptor.h"
#include "kz/util/FilePath.h"

namespace kz::i18n {
namespace {

constexpr std::string_view kBlanks = " \t";

// What tells one state of a file from another.
struct FileState {
  dev_t device = 0;
  ino_t number = 0;  // 0: there is no such file
  off_t size = 0;
  timespec modified{}, changed{};

  static FileState of(const std::string& path) {
    struct stat entry {};
    // Reading anything but a regular file could take for ever.
    if (stat(path.c_str(), &entry) != 0 || !S_ISREG(entry.st_mode)) return {};
    return {entry.st_dev, entry.st_ino, entry.st_size, entry.st_mtim, entry.st_ctim};
  }
  bool operator==(const FileState& other) const {
    const auto same = [](const timespec& left, const timespec& right) {
      return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
    };
    return device == other.device && number == other.number && size == other.size &&
           same(modified, other.modified) && same(changed, other.changed);
  }
  // Whether any later change will show: a file system may keep times no finer than two seconds, so
  // that a second change within them leaves the file with the same times.
  bool isSettled() const { return number == 0 || changed.tv_sec + 2 < std::time(nullptr); }
};

std::string readFile(const std::string& path) {
  const io::FileDescriptor file(path, O_RDONLY);
  std::string content;
  std::array<char, 16384> piece{};
  while (const std::size_t count = io::readSome(file.get(), piece.data(), piece.size())) {
    content.append(piece.data(), count);
  }
  return content;
}

// The character of an escape \uXXXX, if the four digits are there.
std::optional<wchar_t> unicodeEscape(std::string_view digits) {
  unsigned code = 0;
  if (digits.size() < 4) return std::nullopt;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + 4, code, 16);
  if (error != std::errc() || end != digits.data() + 4) return std::nullopt;
  return static_cast<wchar_t>(code);
}

// An escape that means nothing stands for itself.
String escape(char kind) {
  switch (kind) {
    case 't':
      return "\t";
    case 'n':
      return "\n";
    case '\\':
      return "\\";
    default:
      return std::string{'\\', kind};
  }
}

String unescaped(std::string_view raw) {
  String text;
  for (;;) {
    const std::size_t slash = raw.find('\\');
    if (slash == std::string_view::npos || slash + 1 == raw.size()) return text += raw;
    text += raw.substr(0, slash);
    const char kind = raw[slash + 1];
    raw.remove_prefix(slash + 2);
    const auto code = kind == 'u' ? unicodeEscape(raw) : std::nullopt;
    if (code) raw.remove_prefix(4);
    text += code ? String(std::wstring(1, *code)) : escape(kind);
  }
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = std::min(text.find_first_not_of(kBlanks), text.size());
  text.remove_prefix(first);
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

}  // namespace

class StringBundle::Texts {
 public:
  explicit Texts(std::string content) : content_(std::move(content)) {
    std::string_view rest = utf8::withoutByteOrderMark(content_);
    while (!rest.empty()) {
      const std::size_t end = std::min(rest.find('\n'), rest.size());
      addLine(rest.substr(0, end));
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  }

  const String* find(std::string_view key) {
    const auto text = texts_.find(key);
    if (text == texts_.end()) return nullptr;
    if (!text->second.decoded) text->second.decoded = unescaped(text->second.raw);
    return &*text->second.decoded;
  }

 private:
  struct Text {
    std::string_view raw;
    std::optional<String> decoded;
  };

  void addLine(std::string_view line) {
    if (line.ends_with('\r')) line.remove_suffix(1);
    const std::size_t equals = line.find('=');
    if (line.starts_with('#') || equals == std::string_view::npos) return;
    std::string_view text = line.substr(equals + 1);
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    texts_.insert_or_assign(trimmed(line.substr(0, equals)), Text{text, {}});
  }

  std::string content_;
  std::map<std::string_view, Text> texts_;  // parts of the content
};

const std::string& StringBundle::folder() {
  // Without "..", which every look at a file would have to resolve again.
  static const std::string path =
      (std::filesystem::path(util::FilePath::getProgramDir().getBytes()) / KNOB_BUNDLE_PATH)
          .lexically_normal();
  return path;
}

// One file of a bundle, as it was when it was last looked at.
struct StringBundle::Source {
  std::string path;
  FileState state{};
  bool settled = false;
  std::optional<std::string> content{};
  int status = kStatusFileNotFound;  // why there is no content

  // Whether the content is another than it was.
  bool look() {
    const FileState now = FileState::of(path);
    if (settled && now == state) return false;
    Source fresh{path, now, now.isSettled()};
    try {
      if (now.number != 0) fresh.content = readFile(path);
    } catch (const ResultException& failure) {
      fresh.status = failure.getResult();
      fresh.settled = false;  // the next look may have more luck
    }
    std::swap(*this, fresh);
    return content != fresh.content;
  }
};

std::vector<StringBundle::Source> StringBundle::sources(const String& name, const Locale& locale) {
  std::vector<std::string> suffixes = locale.suffixes();
  suffixes.emplace_back();
  std::vector<Source> sources;
  sources.reserve(suffixes.size());
  for (const std::string& suffix : suffixes) {
    sources.push_back({folder() + "/" + name.getBytes() + suffix + ".properties"});
  }
  return sources;
}

StringBundle::StringBundle(const std::vector<Source>& sources) {
  // A language that cannot be read is a language that is not there.
  if (!sources.back().content) throw ResultException(sources.back().status);
  for (const Source& source : sources) {
    if (source.content) texts_.push_back(std::make_unique<Texts>(*source.content));
  }
}

StringBundle::~StringBundle() = default;

Reference<StringBundle> StringBundle::getBundle(const String& name, const Locale* locale) {
  struct Entry {
    String name;
    std::vector<std::string> suffixes;
    std::vector<Source> sources;
    Reference<StringBundle> bundle;
  };
  static std::list<Entry> cache;

  const Locale& language = locale != nullptr ? *locale : Locale::getDefault();
  const auto known = std::find_if(cache.begin(), cache.end(), [&](const Entry& candidate) {
    return candidate.name == name && candidate.suffixes == language.suffixes();
  });
  Entry& entry =
      known != cache.end()
          ? *known
          : cache.emplace_back(Entry{name, language.suffixes(), sources(name, language), {}});
  for (Source& source : entry.sources) {
    if (source.look()) entry.bundle = {};
  }
  if (!entry.bundle) entry.bundle = Reference<StringBundle>(new StringBundle(entry.sources));
  return entry.bundle;
}

String StringBundle::getString(const String& key) const {
  return getString(key.getBytes(), [](const String&) { return true; });
}

String StringBundle::getString(const std::string& key, const Accepts& accepts) const {
  for (const std::unique_ptr<Texts>& texts : texts_) {
    const String* const text = texts->find(key);
    if (text != nullptr && accepts(*text)) return *text;
  }
  throw Exception("no text for the key " + key);
}

}  // namespace kz::i18n
