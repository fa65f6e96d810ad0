#include "compose.h"

#include <mmsbrix/convert/media_types.h>
#include <mmsbrix/convert/mmsconvert.h>
#include <mmsbrix/convert/replies.h>
#include <mmsbrix/convert/slides.h>
#include <mmsbrix/mms/charsets.h>
#include <mmsbrix/mms/mmscodec.h>
#include <mmsbrix/mms/transaction_id.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <CLI/Validators.hpp>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <ostream>
#include <set>

#include "clock.h"
#include "host.h"
#include "message_check.h"
#include "message_json.h"
#include "recipient.h"
#include "smil_command.h"
#include "when.h"

namespace mmsbrix::tool {
namespace {

constexpr int kMaxJsonDepth = 32;
constexpr const char* kMixed = "application/vnd.wap.multipart.mixed";
constexpr const char* kRelated = "application/vnd.wap.multipart.related";

// One part to be made, before it has its name.
struct PartPlan {
  std::string type;
  std::string name;
  std::string id;
  std::string charset;  // empty for none
  CMMPart content;
};

class Composer {
 public:
  Composer(const ComposeCommand& command, CMMsg& message, std::vector<std::string>& problems)
      : command_(command), message_(message), problems_(problems) {}

  void run() {
    message_.Clear();
    message_.SetMsgType(CMMsg::MSG_TYPE_SEND_REQ);
    message_.SetVersion(command_.version.c_str());
    message_.SetTransactionId(
        (command_.transactionId.empty() ? uniqueTransactionId() : command_.transactionId).c_str());
    if (!command_.replyTo.empty()) reply();
    addRecipients(command_.to, *message_.GetTo());
    addRecipients(command_.cc, *message_.GetCc());
    addRecipients(command_.bcc, *message_.GetBcc());
    setFields();
    if (!command_.slides.empty() || !command_.smilFile.empty()) {
      presentation();
    } else {
      planParts();
      putTogether();
    }
  }

 private:
  void problem(std::string text) { problems_.push_back(std::move(text)); }

  // The address; one whose kind cannot be told is a problem, and with force of the other kind.
  std::optional<CMMAddr> address(const std::string& text) {
    std::string error;
    auto parsed = parseRecipient(text, false, error);
    if (parsed) return parsed;
    problem(error);
    return command_.force ? parseRecipient(text, true, error) : std::nullopt;
  }

  void addRecipients(const std::vector<std::string>& texts, CMMAddrList& list) {
    for (const std::string& text : texts) {
      if (const auto recipient = address(text)) list.Add(&*recipient);
    }
  }

  // To everybody in a received message but oneself, under its subject.
  void reply() {
    CMMsg received;
    errno = 0;
    if (MMS_Load(command_.replyTo.c_str(), &received, 0) == 0 || received.GetMsgType() == 0) {
      problem(command_.replyTo + ": " + (errno != 0 ? std::strerror(errno) : "is no MMS PDU"));
      return;
    }
    CMMAddrList own;
    addRecipients(command_.own, own);
    const ReplyRecipients people = replyToAll(received, {own.begin(), own.end()});
    for (const CMMAddr& address : people.to) message_.AddTo(&address);
    for (const CMMAddr& address : people.cc) message_.AddCc(&address);
    if (const CMMString* subject = received.GetSubject(); subject && !command_.hasSubject) {
      const CMMString answer = replySubject(*subject);
      message_.SetSubject(&answer);
    }
  }

  // The text in the charset asked for; as UTF-8 when it has no form there.
  CMMString inCharset(const std::string& text, const char* what) {
    const auto converted = fromUtf8(text, command_.charset);
    if (!converted) {
      problem(std::string(what) + " has no form in the charset " + command_.charset);
      return {text.c_str(), "utf-8"};
    }
    return {converted->c_str(), command_.charset.c_str()};
  }

  std::optional<SYSTEMTIME> when(const std::string& text, const char* what) {
    if (text.empty()) return std::nullopt;
    const auto record = parseWhen(text);
    if (!record)
      problem(std::string(what) + ": '" + text +
              "' is no time (2026-11-24T10:00) or interval (2d, 36h)");
    return record;
  }

  void setFields() {
    if (!command_.from.empty()) {
      if (const auto from = address(command_.from)) message_.SetFrom(&*from);
    }
    if (command_.hasSubject) {
      const CMMString subject = inCharset(command_.subject, "the subject");
      message_.SetSubject(&subject);
    }
    if (const auto date = when(command_.date, "--date")) {
      if (date->wYear == 0) problem("--date: an interval is no date");
      message_.SetDate(&*date);
    }
    if (const auto expiry = when(command_.expiry, "--expiry")) message_.SetExpiry(&*expiry);
    if (const auto time = when(command_.deliveryTime, "--delivery-time")) {
      message_.SetDeliveryTime(&*time);
    }
    static const std::map<std::string, CMMsg::MSG_CLASS> kClasses = {
        {"personal", CMMsg::MSG_CLASS_PERSONAL},
        {"advertisement", CMMsg::MSG_CLASS_ADVERTISEMENT},
        {"informational", CMMsg::MSG_CLASS_INFORMATIONAL},
        {"auto", CMMsg::MSG_CLASS_AUTO}};
    static const std::map<std::string, CMMsg::MSG_PRIORITY> kPriorities = {
        {"low", CMMsg::MSG_PRIORITY_LOW},
        {"normal", CMMsg::MSG_PRIORITY_NORMAL},
        {"high", CMMsg::MSG_PRIORITY_HIGH}};
    if (!command_.messageClass.empty())
      message_.SetMessageClass(kClasses.at(command_.messageClass));
    if (!command_.priority.empty()) message_.SetPriority(kPriorities.at(command_.priority));
    if (!command_.deliveryReport.empty())
      message_.SetDeliveryReport(command_.deliveryReport == "yes");
    if (!command_.readReply.empty()) message_.SetReadReply(command_.readReply == "yes");
    if (!command_.visibility.empty()) message_.SetSenderVisibility(command_.visibility == "show");
  }

  // The body from slides or from a SMIL file, media included.
  void presentation() {
    CSMIL smil;
    if (!command_.smilFile.empty()) {
      std::string error;
      std::ifstream none;
      if (command_.smilFile == "-")
        return problem("--smil takes a file, since its media are beside it");
      if (!loadSmil(command_.smilFile, none, smil, error)) return problem(error);
      const std::size_t slash = command_.smilFile.find_last_of(host::kPathSeparators);
      if (slash != std::string::npos) {
        resolveSources(smil, command_.smilFile.substr(0, slash + 1));
      }
    } else {
      std::vector<Slide> slides;
      for (const std::string& text : command_.slides) slides.push_back(slide(text));
      buildSlides(slides, smil);
    }
    if (!mediaAreReadable(smil)) return;
    if (MMS_SmilToMMS(&smil, &message_, 0) != 1) {
      problem("the presentation cannot be made a message: a medium cannot be read");
    }
  }

  // "text=...,image=...,audio=...,dur=5s", in any order; a comma inside a text is kept unless one
  // of the names and "=" follow it.
  Slide slide(const std::string& spelled) {
    Slide result;
    std::size_t begin = 0;
    while (begin < spelled.size()) {
      const std::size_t equals = spelled.find('=', begin);
      const std::string name = spelled.substr(begin, equals - begin);
      std::size_t end = spelled.size();
      for (const char* next : {",text=", ",image=", ",audio=", ",dur="}) {
        end = std::min(end, spelled.find(next, begin));
      }
      const std::string value =
          equals == std::string::npos ? "" : spelled.substr(equals + 1, end - equals - 1);
      if (name == "text") {
        result.text = value;
      } else if (name == "image") {
        result.image = value;
      } else if (name == "audio") {
        result.audio = value;
      } else if (const auto time = name == "dur" ? parseClock(value) : std::nullopt) {
        result.duration = std::chrono::milliseconds(*time);
      } else {
        problem("--slide: '" + spelled.substr(begin, end - begin) +
                "' is none of text=, image=, audio=, dur=5s");
      }
      begin = end + 1;
    }
    return result;
  }

  static bool isRelativeFile(const std::string& source) {
    return !source.empty() && source.front() != '/' && source.find("://") == std::string::npos &&
           !source.starts_with("cid:") && !source.starts_with("data:");
  }

  // Sources of a SMIL file are meant from where the file is.
  static void resolveSources(CSMILNode& node, const std::string& folder) {
    for (unsigned i = 0; i < node.ElementCount(); ++i) {
      if (auto* media = dynamic_cast<CSMILMedia*>(node.Element(i))) {
        const std::string source = media->GetSrc() == nullptr ? "" : media->GetSrc();
        if (isRelativeFile(source)) media->PutSrc((folder + source).c_str());
      }
      resolveSources(*node.Element(i), folder);
    }
  }

  bool mediaAreReadable(CSMILNode& node) {
    bool readable = true;
    for (unsigned i = 0; i < node.ElementCount(); ++i) {
      auto* media = dynamic_cast<CSMILMedia*>(node.Element(i));
      const char* source =
          media == nullptr || media->GetContent() != nullptr ? nullptr : media->GetSrc();
      const std::string path = source == nullptr ? "" : source;
      std::string error;
      std::ifstream none;
      if ((isRelativeFile(path) || path.starts_with('/')) && !readAll(path, none, error)) {
        problem(error);
        readable = false;
      }
      readable = mediaAreReadable(*node.Element(i)) && readable;
    }
    return readable;
  }

  void planParts() {
    for (const std::string& text : command_.texts) {
      const CMMString converted = inCharset(text, "a text");
      PartPlan plan;
      plan.type = "text/plain";
      plan.charset = converted.Charset();
      plan.name = command_.texts.size() == 1 ? "text.txt"
                                             : "text" + std::to_string(plans_.size() + 1) + ".txt";
      plan.content.SetContent(converted.Get(), static_cast<int>(converted.Text().size()));
      plans_.push_back(std::move(plan));
    }
    for (const std::string& attachment : command_.attachments) planAttachment(attachment);
    if (command_.texts.empty() && command_.attachments.empty()) {
      problem("there is nothing to send (--text or --attach)");
    }
  }

  void planAttachment(const std::string& attachment) {
    PartPlan plan;
    std::string path;
    if (!splitAttachment(attachment, path, plan)) return;
    if (!plan.content.Load(path.c_str())) {
      // Said by the one function that says why.
      std::string error;
      std::ifstream none;
      readAll(path, none, error);
      problem(error.empty() ? path + ": cannot be read" : error);
      return;
    }
    if (plan.type.empty()) plan.type = mediaTypeOfFile(path);
    if (plan.type.empty()) plan.type = "application/octet-stream";
    if (plan.name.empty()) plan.name = path.substr(path.find_last_of(host::kPathSeparators) + 1);
    const bool isText = plan.type.starts_with("text/");
    const std::string_view octets(reinterpret_cast<const char*>(plan.content.GetContent()),
                                  static_cast<std::size_t>(plan.content.GetContentLen()));
    if (isText && plan.charset.empty() && isUtf8(octets)) plan.charset = "utf-8";
    plans_.push_back(std::move(plan));
  }

  bool splitAttachment(const std::string& attachment, std::string& path, PartPlan& plan) {
    std::size_t end = attachment.find(';');
    path = attachment.substr(0, end);
    while (end != std::string::npos) {
      const std::size_t begin = end + 1;
      end = attachment.find(';', begin);
      const std::string option = attachment.substr(begin, end - std::min(end, begin));
      const std::size_t equals = option.find('=');
      const std::string name = option.substr(0, equals);
      const std::string value = equals == std::string::npos ? "" : option.substr(equals + 1);
      std::string* target = name == "type"      ? &plan.type
                            : name == "name"    ? &plan.name
                            : name == "id"      ? &plan.id
                            : name == "charset" ? &plan.charset
                                                : nullptr;
      if (target == nullptr || value.empty()) {
        problem("'" + option + "' of " + path + " is none of type=, name=, id=, charset=");
        return false;
      }
      *target = value;
    }
    return true;
  }

  void putTogether() {
    if (plans_.empty()) return;
    nameUniquely();
    CMMPart& root = *message_.Content();
    const bool single = command_.container == Container::single;
    if (single) {
      if (plans_.size() > 1)
        problem("--body single takes one part, there are " + std::to_string(plans_.size()));
      root = std::move(plans_.front().content);
      addContentType(plans_.front(), root, false);
      return;
    }
    const auto smil = std::ranges::find(plans_, "application/smil", &PartPlan::type);
    const bool related = command_.container == Container::related ||
                         (command_.container == Container::automatic && smil != plans_.end());
    CMMHdr& header = *root.Headers()->AddNew();
    header.Assign("Content-Type", related ? kRelated : kMixed);
    if (related) addStart(header, smil == plans_.end() ? plans_.front() : *smil);
    for (PartPlan& plan : plans_) {
      CMMPart& part = *root.NewChild();
      part = std::move(plan.content);
      addContentType(plan, part, true);
      part.Headers()->AddNew()->Assign("Content-ID", "<" + plan.id + ">");
      part.Headers()->AddNew()->Assign("Content-Location", plan.name);
    }
  }

  // Content-IDs and names tell the parts apart, so no two may be the same.
  void nameUniquely() {
    std::set<std::string> names;
    std::set<std::string> ids;
    for (PartPlan& plan : plans_) {
      plan.name = unique(plan.name, names);
      plan.id = unique(plan.id.empty() ? plan.name : plan.id, ids);
    }
  }

  static std::string unique(const std::string& wanted, std::set<std::string>& taken) {
    const std::size_t dot = std::min(wanted.rfind('.'), wanted.size());
    std::string name = wanted;
    for (int i = 2; !taken.insert(name).second; ++i) {
      name = wanted.substr(0, dot) + "-" + std::to_string(i) + wanted.substr(dot);
    }
    return name;
  }

  static void addContentType(const PartPlan& plan, CMMPart& part, bool withName) {
    CMMHdr& header = *part.Headers()->AddNew();
    header.Assign("Content-Type", plan.type);
    if (!plan.charset.empty()) header.Params()->AddNew()->Assign("charset", plan.charset);
    if (withName) header.Params()->AddNew()->Assign("name", plan.name);
  }

  void addStart(CMMHdr& header, const PartPlan& first) {
    const auto named = std::ranges::find(plans_, command_.start, &PartPlan::id);
    if (!command_.start.empty() && named == plans_.end()) {
      problem("--start: no part has the id " + command_.start);
    }
    const PartPlan& start = named == plans_.end() ? first : *named;
    header.Params()->AddNew()->Assign("type", start.type);
    header.Params()->AddNew()->Assign("start", "<" + start.id + ">");
  }

  const ComposeCommand& command_;
  CMMsg& message_;
  std::vector<std::string>& problems_;
  std::vector<PartPlan> plans_;
};

bool fromJson(const ComposeCommand& command, const Streams& streams, CMMsg& message,
              std::vector<std::string>& problems) {
  std::string error;
  const auto text = readAll(command.jsonFile, streams.in, error);
  if (!text) {
    problems.push_back(error);
    return false;
  }
  Json description;
  try {
    // Nesting is bounded: what is deeper than any description is not built at all.
    description = Json::parse(*text, [](int depth, Json::parse_event_t, Json&) {
      if (depth > kMaxJsonDepth) throw std::runtime_error("too deeply nested");
      return true;
    });
  } catch (const std::exception& refusal) {
    problems.push_back(command.jsonFile + ": " + refusal.what());
    return false;
  }
  // What `show --json` prints has the description in its member "message".
  if (description.is_object() && description.contains("message")) {
    description = Json(description["message"]);
  }
  const std::size_t slash = command.jsonFile.find_last_of(host::kPathSeparators);
  const std::string folder = slash == std::string::npos ? "" : command.jsonFile.substr(0, slash);
  if (!readMessage(description, folder, command.force, message, error)) {
    problems.push_back(command.jsonFile + ": " + error);
    return false;
  }
  return true;
}

int writeMessage(const ComposeCommand& command, CMMsg& message, const Streams& streams) {
  if (command.output != "-") {
    errno = 0;
    if (MMS_Save(&message, command.output.c_str(), 0) != 0) return kDone;
    streams.err << "mmsbrix compose: " << printable(command.output)
                << ": the message cannot be written"
                << (errno == 0 ? "" : std::string(": ") + std::strerror(errno)) << '\n';
    return kFailed;
  }
  void* data = nullptr;
  unsigned int size = 0;
  const int complete = MMS_SaveToMemory(&message, &data, &size, 0);
  const std::unique_ptr<void, void (*)(void*)> buffer(data, &MMS_Free);
  if (complete == 1)
    streams.out.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
  streams.out.flush();
  if (complete == 1 && streams.out) return kDone;
  streams.err << "mmsbrix compose: standard output: the message cannot be written\n";
  return kFailed;
}

}  // namespace

CLI::App* addCompose(CLI::App& app, ComposeCommand& command) {
  CLI::App* compose = app.add_subcommand("compose", "Compose a message (m-send-req) into a file");
  compose->footer(
      "Examples:\n"
      "  mmsbrix compose --to +358401234567 --subject Hi --text 'Look!' --attach photo.jpg -o "
      "hi.mms\n"
      "  mmsbrix compose --to ann@example.com --text Later --delivery-time 36h -o later.mms\n"
      "  mmsbrix compose --to +1 --slide text=Hello,image=a.jpg,dur=3s --slide 'text=Bye' -o "
      "show.mms\n"
      "  mmsbrix show --json hi.mms | mmsbrix compose --json - -o same.mms");
  const auto list = [&](const char* name, std::vector<std::string>& values, const char* what,
                        const char* type) {
    return compose->add_option(name, values, what)->type_name(type)->expected(1)->take_all();
  };
  compose
      ->add_option("-o,--output", command.output, "Where the message goes, - for standard output")
      ->type_name("FILE")
      ->required();
  CLI::Option* json = compose
                          ->add_option("--json", command.jsonFile,
                                       "Take all of the message from a JSON description")
                          ->type_name("FILE");
  compose->add_flag("--force", command.force, "Write it although it makes no valid message");
  std::vector<CLI::Option*> fields = {
      list("--to", command.to,
           "Recipient: telephone number, mail or IP address; kind forced by plmn:, mail:, ipv4:, "
           "ipv6:, other:",
           "ADDRESS"),
      list("--cc", command.cc, "Recipient of a copy", "ADDRESS"),
      list("--bcc", command.bcc, "Recipient of a blind copy", "ADDRESS"),
      compose->add_option("--from", command.from, "Sender; left to the relay when not given")
          ->type_name("ADDRESS"),
      compose
          ->add_option("--reply", command.replyTo,
                       "Reply to everybody in this received message, with its subject")
          ->type_name("FILE"),
      list("--own", command.own, "With --reply: own address, which is left out", "ADDRESS"),
      compose->add_option("--subject", command.subject, "Subject, UTF-8")->type_name("TEXT"),
      list("--text", command.texts, "Text part, UTF-8", "TEXT"),
      list("--attach", command.attachments, "Part from a file; the type from its name unless given",
           "FILE[;type=..][;name=..][;id=..][;charset=..]"),
      list("--slide", command.slides,
           "Slide of a presentation, repeatable; instead of --text and --attach",
           "text=..,image=..,audio=..,dur=5s"),
      compose->add_option("--smil", command.smilFile, "Presentation, sent with the media it names")
          ->type_name("FILE"),
      compose->add_option("--charset", command.charset, "Charset that subject and texts go out in")
          ->type_name("NAME")
          ->capture_default_str(),
      compose->add_option("--date", command.date, "Date of the message")->type_name("TIME"),
      compose
          ->add_option("--expiry", command.expiry, "Time (2026-11-24T10:00) or interval (2d, 36h)")
          ->type_name("WHEN"),
      compose
          ->add_option("--delivery-time", command.deliveryTime,
                       "Time or interval of earliest delivery")
          ->type_name("WHEN"),
      compose->add_option("--class", command.messageClass, "Message class")
          ->check(CLI::IsMember({"personal", "advertisement", "informational", "auto"})),
      compose->add_option("--priority", command.priority, "Priority")
          ->check(CLI::IsMember({"low", "normal", "high"})),
      compose->add_option("--delivery-report", command.deliveryReport, "Ask for a delivery report")
          ->check(CLI::IsMember({"yes", "no"})),
      compose->add_option("--read-reply", command.readReply, "Ask for a read reply")
          ->check(CLI::IsMember({"yes", "no"})),
      compose
          ->add_option("--visibility", command.visibility, "Show or hide the sender to recipients")
          ->check(CLI::IsMember({"show", "hide"})),
      compose->add_option("--mms-version", command.version, "MMS version")
          ->type_name("MAJOR.MINOR")
          ->capture_default_str(),
      compose
          ->add_option("--transaction-id", command.transactionId, "Made up, unique, when not given")
          ->type_name("ID"),
      compose
          ->add_option("--start", command.start,
                       "Id of the part that a related message starts with")
          ->type_name("ID"),
  };
  static const std::map<std::string, Container> kContainers = {{"auto", Container::automatic},
                                                               {"single", Container::single},
                                                               {"mixed", Container::mixed},
                                                               {"related", Container::related}};
  fields.push_back(
      compose
          ->add_option("--body", command.container,
                       "single is one part and no multipart, auto is related with a presentation, "
                       "else mixed")
          ->transform(CLI::CheckedTransformer(kContainers, CLI::ignore_case)
                          .description("{auto,single,mixed,related}"))
          ->type_name("KIND"));
  for (CLI::Option* field : fields) field->excludes(json);
  compose->get_option("--own")->needs(compose->get_option("--reply"));
  // The body comes from one source.
  for (const char* presentation : {"--slide", "--smil"}) {
    for (const char* other : {"--text", "--attach", "--body", "--start"}) {
      compose->get_option(presentation)->excludes(compose->get_option(other));
    }
  }
  compose->get_option("--slide")->excludes(compose->get_option("--smil"));
  compose->callback([compose, &command] { command.hasSubject = compose->count("--subject") > 0; });
  return compose;
}

bool composeMessage(const ComposeCommand& command, CMMsg& message,
                    std::vector<std::string>& problems) {
  Composer(command, message, problems).run();
  return problems.empty() || command.force;
}

int runCompose(const ComposeCommand& command, const Streams& streams) {
  CMMsg message;
  std::vector<std::string> problems;
  const bool made = command.jsonFile.empty() ? composeMessage(command, message, problems)
                                             : fromJson(command, streams, message, problems);
  if (made) {
    for (std::string& problem : findProblems(message)) problems.push_back(std::move(problem));
  }
  for (const std::string& problem : problems) {
    streams.err << "mmsbrix compose: " << (made && command.force ? "warning: " : "")
                << printable(problem) << "\n";
  }
  if (!made || (!problems.empty() && !command.force)) return kFailed;
  return writeMessage(command, message, streams);
}

}  // namespace mmsbrix::tool
