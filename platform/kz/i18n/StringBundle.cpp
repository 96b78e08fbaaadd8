#include "kz/i18n/StringBundle.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fcntl.h>
#include <list>
#include <map>
#include <optional>
#include <sys/stat.h>
#include <utility>

#include "kz/Exception.h"
#include "kz/io/FileDescriptor.h"
#include "kz/io/FolderWatch.h"
#include "kz/util/FilePath.h"

namespace kz::i18n {
namespace {

constexpr std::string_view kBlanks = " \t";

// What tells one state of a file from another.
struct FileState {
  dev_t device = 0;
  ino_t number = 0;  // 0: the file does not exist
  off_t size = 0;
  timespec modified{}, changed{};
  bool isLink = false;  // to a file that lies elsewhere, where nobody watches it

  static FileState of(std::string const& path) {
    struct stat entry {};
    if (lstat(path.c_str(), &entry) != 0) return {};
    const bool isLink = S_ISLNK(entry.st_mode);
    if (isLink && stat(path.c_str(), &entry) != 0) entry = {};
    return {entry.st_dev, entry.st_ino, entry.st_size, entry.st_mtim, entry.st_ctim, isLink};
  }
  bool operator==(FileState const& other) const {
    const auto same = [](timespec const& left, timespec const& right) {
      return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
    };
    return isLink == other.isLink && device == other.device && number == other.number &&
           size == other.size && same(modified, other.modified) && same(changed, other.changed);
  }
};

std::string readFile(std::string const& path) {
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

// Counts the changes in the bundles' folder, so that each bundle knows whether it has to look.
long folderGeneration() {
  static io::FolderWatch watch(StringBundle::folder());
  static long generation = 0;
  if (watch.perhapsChanged()) ++generation;
  return generation;
}

}  // namespace

struct StringBundle::Source {
  std::string path;
  FileState state;
  bool operator==(Source const&) const = default;
};

class StringBundle::Texts {
 public:
  explicit Texts(std::string const& path) : content_(readFile(path)) {
    std::string_view rest = content_;
    while (!rest.empty()) {
      const std::size_t end = std::min(rest.find('\n'), rest.size());
      addLine(rest.substr(0, end));
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  }

  std::optional<String> find(std::string const& key) {
    const auto text = texts_.find(key);
    if (text == texts_.end()) return std::nullopt;
    if (!text->second.decoded) text->second.decoded = unescaped(text->second.raw);
    return text->second.decoded;
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

std::string const& StringBundle::folder() {
  static const std::string path = util::FilePath::getProgramDir().getBytes() + "/../share/knob";
  return path;
}

std::vector<StringBundle::Source> StringBundle::sources(std::string const& name,
                                                        Locale const& locale) {
  std::vector<std::string> suffixes = locale.suffixes();
  suffixes.emplace_back();
  std::vector<Source> sources;
  for (std::string const& suffix : suffixes) {
    std::string path = folder();
    path.append("/").append(name).append(suffix).append(".properties");
    sources.push_back({path, FileState::of(path)});
  }
  return sources;
}

StringBundle::StringBundle(std::vector<Source> const& sources) {
  for (Source const& source : sources) {
    const bool required = &source == &sources.back();
    if (source.state.number == 0 && !required) continue;
    try {
      texts_.push_back(std::make_unique<Texts>(source.path));
    } catch (ResultException const&) {
      // A language that cannot be read is a language that is not there.
      if (required) throw;
    }
  }
}

StringBundle::~StringBundle() = default;

Reference<StringBundle> StringBundle::getBundle(String const& name, Locale const* locale) {
  struct Entry {
    String name;
    std::vector<std::string> suffixes;
    long generation = 0;
    std::vector<Source> sources;
    Reference<StringBundle> bundle;
  };
  static std::list<Entry> cache;

  Locale const& language = locale != nullptr ? *locale : Locale::getDefault();
  auto known = std::find_if(cache.begin(), cache.end(), [&](Entry const& candidate) {
    return candidate.name == name && candidate.suffixes == language.suffixes();
  });
  if (known == cache.end())
    known = cache.insert(known, Entry{name, language.suffixes(), 0, {}, {}});
  Entry& entry = *known;
  const long generation = folderGeneration();
  const bool watched = std::none_of(entry.sources.begin(), entry.sources.end(),
                                    [](Source const& source) { return source.state.isLink; });
  if (entry.bundle && watched && entry.generation == generation) return entry.bundle;
  std::vector<Source> found = sources(name.getBytes(), language);
  if (!entry.bundle || found != entry.sources) {
    entry.bundle = {};  // a bundle that is gone stays gone when reading it throws
    entry.bundle = Reference<StringBundle>(new StringBundle(found));
    entry.sources = std::move(found);
  }
  entry.generation = generation;
  return entry.bundle;
}

String StringBundle::getString(String const& key) const {
  const std::string wanted = key.getBytes();
  for (std::unique_ptr<Texts> const& texts : texts_) {
    if (const std::optional<String> text = texts->find(wanted)) return *text;
  }
  throw Exception("no text for the key " + key);
}

}  // namespace kz::i18n
