// The desktop's shared media-type database: in each data folder "mime/globs2", lines
// "weight:type:pattern[:flags]" with the heaviest first.
#include "platform/media_types.h"

#include <cstdlib>
#include <fstream>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/ascii.h"

namespace mmsbrix::platform {
namespace {

std::string environment(const char* name, const std::string& otherwise) {
  const char* value = std::getenv(name);
  return value == nullptr || *value == 0 ? otherwise : value;
}

// The folders of the XDG base directories, the user's own first.
std::vector<std::string> dataFolders() {
  std::vector<std::string> folders;
  folders.push_back(environment("XDG_DATA_HOME", environment("HOME", "") + "/.local/share"));
  const std::string shared = environment("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
  for (std::size_t begin = 0; begin <= shared.size();) {
    const std::size_t end = std::min(shared.find(':', begin), shared.size());
    if (end > begin) folders.push_back(shared.substr(begin, end - begin));
    begin = end + 1;
  }
  return folders;
}

struct Row {
  std::string mediaType;
  std::string glob;
};

/// The rows of all folders, in the order in which they count.
struct Database {
  std::vector<std::string> folders;
  std::vector<Row> rows;
};

Database load(std::vector<std::string> folders) {
  Database database{std::move(folders), {}};
  for (const std::string& folder : database.folders) {
    std::ifstream globs(folder + "/mime/globs2");
    for (std::string line; std::getline(globs, line);) {
      const std::string_view row = line;
      if (row.starts_with('#')) continue;
      const std::size_t type = row.find(':');
      const std::size_t pattern = row.find(':', type + 1);
      if (type == std::string_view::npos || pattern == std::string_view::npos) continue;
      const std::size_t end = row.find(':', pattern + 1);
      database.rows.push_back({std::string(row.substr(type + 1, pattern - type - 1)),
                               std::string(row.substr(pattern + 1, end - pattern - 1))});
    }
  }
  return database;
}

// Read once: a message may ask for thousands of types.  Other folders make another database.
std::shared_ptr<const Database> database() {
  static std::mutex mutex;
  static std::shared_ptr<const Database> known;
  std::vector<std::string> folders = dataFolders();
  const std::lock_guard lock(mutex);
  if (known == nullptr || known->folders != folders) {
    known = std::make_shared<const Database>(load(std::move(folders)));
  }
  return known;
}

// Walks the database until `take` returns true.
template <class Take>
void forEachRow(Take&& take) {
  const std::shared_ptr<const Database> all = database();
  for (const Row& row : all->rows) {
    if (take(row)) return;
  }
}

}  // namespace

std::string mediaTypeOfExtension(std::string_view extension) {
  std::string found;
  forEachRow([&](const Row& row) {
    if (!row.glob.starts_with('*') ||
        !equalsIgnoringCase(std::string_view(row.glob).substr(1), extension)) {
      return false;
    }
    found = row.mediaType;
    return true;
  });
  return found;
}

std::string extensionOfMediaType(std::string_view mediaType) {
  std::string found;
  forEachRow([&](const Row& row) {
    // Of the patterns only "*.extension" names one.
    if (!row.glob.starts_with("*.") ||
        row.glob.find_first_of("*?[/\\", 1) != std::string_view::npos ||
        !equalsIgnoringCase(row.mediaType, mediaType)) {
      return false;
    }
    found = row.glob.substr(1);
    return true;
  });
  return found;
}

}  // namespace mmsbrix::platform
