#include "operations.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string_view>

#include "convert/mmsconvert.h"
#include "mms/message_view.h"
#include "mms/mmscodec.h"
#include "sample_messages.h"
#include "smil/smilcodec.h"
#include "wsp/wsp_assigned_headers.h"

namespace mmsbrix::bench {
namespace {

namespace fs = std::filesystem;
using Buffer = std::vector<std::uint8_t>;

// The compiler must take it that somebody looks.
template <class T>
void keep(const T& value) {
  asm volatile("" : : "g"(&value) : "memory");
}

void require(bool good) {
  if (!good) std::abort();
}

struct Sample {
  const char* name;
  Buffer pdu;
};

const std::vector<Sample>& received() {
  static const std::vector<Sample> samples = {
      {"notification", notification()},
      {"send-conf", sendConf()},
      {"31KB", encoded(requestWithPictures(1, 30'700))},
      {"308KB", encoded(requestWithPictures(3, 307'000))},
      {"5.2MB", encoded(requestWithPictures(3, 5'200'000))},
      {"1000-parts", encoded(requestWithSmallParts(1000))},
      {"100-parts", encoded(requestWithSmallParts(100))},
  };
  return samples;
}

struct Composed {
  const char* name;
  std::shared_ptr<CMMsg> message;
};

const std::vector<Composed>& composed() {
  static const std::vector<Composed> samples = {
      {"request", std::make_shared<CMMsg>(smallRequest())},
      {"31KB", std::make_shared<CMMsg>(requestWithPictures(1, 30'700))},
      {"308KB", std::make_shared<CMMsg>(requestWithPictures(3, 307'000))},
      {"5.2MB", std::make_shared<CMMsg>(requestWithPictures(3, 5'200'000))},
      {"1000-parts", std::make_shared<CMMsg>(requestWithSmallParts(1000))},
      {"100-parts", std::make_shared<CMMsg>(requestWithSmallParts(100))},
  };
  return samples;
}

void addCopies(std::vector<Operation>& list, const std::string& name, std::size_t octets) {
  auto from = std::make_shared<Buffer>(octets, std::uint8_t{7});
  auto to = std::make_shared<Buffer>(octets);
  list.push_back({"copy/" + name, octets, [from, to] {
                    std::memcpy(to->data(), from->data(), from->size());
                    keep(*to->data());
                  }});
}

void addCodec(std::vector<Operation>& list) {
  for (const Sample& sample : received()) {
    addCopies(list, sample.name, sample.pdu.size());
    auto message = std::make_shared<CMMsg>();
    list.push_back({std::string("decode/") + sample.name, sample.pdu.size(), [&sample, message] {
                      MMS_LoadFromMemory(sample.pdu.data(),
                                         static_cast<unsigned>(sample.pdu.size()), message.get(),
                                         0);
                      keep(*message);
                    }});
  }
  for (const Sample& sample : received()) {
    list.push_back({std::string("view/") + sample.name, sample.pdu.size(), [&sample] {
                      const MessageView view(sample.pdu.data(),
                                             static_cast<unsigned>(sample.pdu.size()));
                      keep(view.messageType());
                      view.eachPart([](const PartView& part) { keep(part); });
                    }});
  }
  for (const Composed& sample : composed()) {
    const std::size_t octets = encoded(*sample.message).size();
    if (sample.name == std::string_view("request")) addCopies(list, sample.name, octets);
    list.push_back({std::string("encode/") + sample.name, octets, [&sample] {
                      void* data = nullptr;
                      unsigned size = 0;
                      require(MMS_SaveToMemory(sample.message.get(), &data, &size, 0) == 1);
                      keep(data);
                      MMS_Free(data);
                    }});
    list.push_back({std::string("copy-message/") + sample.name, octets, [&sample] {
                      const CMMsg copy(*sample.message);
                      keep(copy);
                    }});
  }
}

// One run looks up every row of a table, or as many names that no table has.
void addLookups(std::vector<Operation>& list) {
  using namespace WapAssignments;
  for (const auto& [kind, name] : std::to_array<std::pair<Kind, const char*>>(
           {{kLanguages, "languages"}, {kHeaders, "headers"}, {kContentTypes, "types"}})) {
    const AssignmentsBase& table = *getTable(kind);
    list.push_back({std::string("lookup-name/") + name, table.rowCount, [&table] {
                      std::int32_t sum = 0;
                      for (std::size_t i = 0; i < table.rowCount; ++i) {
                        sum += nameToNumber(table, table.rows[i].name);
                      }
                      keep(sum);
                    }});
    list.push_back({std::string("lookup-missing-name/") + name, table.rowCount, [&table] {
                      std::int32_t sum = 0;
                      for (std::size_t i = 0; i < table.rowCount; ++i) {
                        sum += nameToNumber(table, "X-Nobody-Has-This");
                      }
                      keep(sum);
                    }});
    list.push_back({std::string("lookup-code/") + name, table.rowCount, [&table] {
                      for (std::size_t i = 0; i < table.rowCount; ++i) {
                        keep(numberToName(table, table.rows[i].code()));
                      }
                    }});
  }
}

void addSmil(std::vector<Operation>& list) {
  for (const auto& [name, octets] :
       std::to_array<std::pair<const char*, std::size_t>>({{"0.4KB", 424}, {"200KB", 200'000}})) {
    auto text = std::make_shared<std::string>(presentation(octets));
    addCopies(list, std::string("smil-") + name, text->size());
    list.push_back({std::string("smil-read/") + name, text->size(), [text] {
                      CSMIL smil;
                      require(MMS_LoadSmilFromMemory(text->c_str(), &smil, 0) == 1);
                      keep(smil);
                    }});
    auto smil = std::make_shared<CSMIL>();
    require(MMS_LoadSmilFromMemory(text->c_str(), smil.get(), 0) == 1);
    unsigned written = 0;
    unsigned char* buffer = nullptr;
    require(MMS_SaveSmilToMemory(smil.get(), &buffer, &written, 0) == 1);
    MMS_Free(buffer);
    list.push_back({std::string("smil-write/") + name, written, [smil] {
                      unsigned char* data = nullptr;
                      unsigned length = 0;
                      require(MMS_SaveSmilToMemory(smil.get(), &data, &length, 0) == 1);
                      keep(data);
                      MMS_Free(data);
                    }});
  }
}

// A folder that goes away with the process.
class Folder {
 public:
  Folder() : path_((fs::temp_directory_path() / "mmsbrix-bench-XXXXXX").string()) {
    require(::mkdtemp(path_.data()) != nullptr);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  [[nodiscard]] std::string file(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

}  // namespace

std::vector<Operation> operationsInMemory() {
  std::vector<Operation> list;
  addCodec(list);
  addLookups(list);
  addSmil(list);
  return list;
}

std::vector<Operation> operationsOnFiles() {
  static const Folder folder;
  std::vector<Operation> list;
  for (const Composed& sample : composed()) {
    const std::string path = folder.file(sample.name);
    const std::size_t octets = MMS_Save(sample.message.get(), path.c_str(), 0);
    require(octets > 0);
    auto message = std::make_shared<CMMsg>();
    list.push_back({std::string("load/") + sample.name, octets,
                    [path, message] { require(MMS_Load(path.c_str(), message.get(), 0) == 1); }});
    const std::string target = path + ".saved";
    list.push_back({std::string("save/") + sample.name, octets, [&sample, target] {
                      require(MMS_Save(sample.message.get(), target.c_str(), 0) > 0);
                    }});
  }
  auto message = std::make_shared<CMMsg>(requestWithPictures(3, 307'000));
  const std::string prefix = folder.file("media-");
  list.push_back({"extract/308KB", 308'000, [message, prefix] {
                    CSMIL smil;
                    require(MMS_MMSToSmil(message.get(), &smil, prefix.c_str(), 0) == 1);
                    // Otherwise the next run would look for names that are free.
                    for (CSMILNode* par = smil.GetBody()->FirstElement(nullptr); par != nullptr;
                         par = smil.GetBody()->NextElement(nullptr)) {
                      auto* media = dynamic_cast<CSMILMedia*>(par->Element(0));
                      fs::remove(media->GetSrc());
                    }
                  }});
  return list;
}

}  // namespace mmsbrix::bench
