#include "fetch.h"

#include <mmsbrix/mms/mmscodec.h>
#include <mmsbrix/mms/receiving.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <CLI/Validators.hpp>
#include <ctime>
#include <optional>
#include <ostream>
#include <string_view>
#include <vector>

#include "recipient.h"

namespace mmsbrix::tool {
namespace {

int refuse(const Streams& streams, const char* verb, const std::string& why) {
  streams.err << "mmsbrix " << verb << ": " << printable(why) << '\n';
  return kFailed;
}

std::optional<Notification> loadNotification(const std::string& path, const Streams& streams) {
  std::string error;
  const auto pdu = readAll(path, streams.in, error);
  auto notification = pdu ? readNotification(pdu->data(), pdu->size()) : std::nullopt;
  if (pdu && !notification) error = path + ": this is no m-notification-ind";
  if (notification && notification->contentLocation.empty()) {
    error = path + ": the notification does not say where the message is";
    notification.reset();
  }
  if (!notification) refuse(streams, "fetch", error);
  return notification;
}

// One way through `fetch`.
class Fetch {
 public:
  Fetch(const FetchCommand& command, HttpSession& session, const Streams& streams)
      : command_(command), session_(session), streams_(streams), url_(command.location) {}

  int run() {
    if (!command_.notificationFile.empty()) {
      notification_ = loadNotification(command_.notificationFile, streams_);
      if (!notification_) return kFailed;
      url_ = notification_->contentLocation;
    }
    if (command_.defer) return answerNotification(DeliveryStatus::deferred);
    if (command_.reject) return answerNotification(DeliveryStatus::rejected);
    std::vector<std::uint8_t> pdu;
    const bool fetched = session_.transport().FetchMMS(url_.c_str(), pdu);
    session_.endProgress();
    const std::string result = session_.result();
    if (!fetched) return refuse(streams_, "fetch", url_ + " not fetched: " + result);
    const std::string_view octets(reinterpret_cast<const char*>(pdu.data()), pdu.size());
    if (const int failure = writeOutput(command_.output, octets, "fetch", streams_);
        failure != kDone) {
      return failure;
    }
    if (command_.output != "-") {
      streams_.out << printable(command_.output) << ": " << octetCount(pdu.size()) << ", " << result
                   << '\n';
    }
    return notification_ ? answerNotification(DeliveryStatus::retrieved) : acknowledge(octets);
  }

 private:
  [[nodiscard]] std::optional<bool> reportAllowed() const {
    if (command_.reportAllowed.empty()) return std::nullopt;
    return command_.reportAllowed == "yes";
  }

  int answerNotification(DeliveryStatus status) {
    return post("m-notifyresp-ind",
                encodePdu(NotifyRespInd{notification_->transactionId, notification_->version,
                                        status, reportAllowed()}));
  }

  // A relay that wants to know gives a transaction id. [OMA-MMS-ENC 6.3]
  int acknowledge(std::string_view pdu) {
    CMMsg message;
    MMS_LoadFromMemory(pdu.data(), static_cast<unsigned>(pdu.size()), &message, 0);
    if (message.GetTransactionId() == nullptr) return kDone;
    return post("m-acknowledge-ind",
                encodePdu(AcknowledgeInd{message.GetTransactionId(), message.GetVersion(),
                                         reportAllowed()}));
  }

  int post(const char* name, const std::vector<std::uint8_t>& pdu) {
    if (command_.noAnswer) return kDone;
    const std::string& url = command_.url.empty() ? url_ : command_.url;
    const bool posted = session_.transport().PostReport(url.c_str(), pdu.data(), pdu.size());
    const std::string result = session_.result();
    if (!posted) return refuse(streams_, "fetch", std::string(name) + " not sent: " + result);
    if (command_.output != "-") streams_.out << "answered: " << name << '\n';
    return kDone;
  }

  const FetchCommand& command_;
  HttpSession& session_;
  const Streams& streams_;
  std::string url_;
  std::optional<Notification> notification_;
};

}  // namespace

CLI::App* addFetch(CLI::App& app, FetchCommand& command) {
  CLI::App* fetch =
      app.add_subcommand("fetch", "Fetch a message from its relay, store it, and answer");
  fetch->footer(
      "Examples:\n"
      "  mmsbrix fetch http://mmsc.example/message/17 -o got.mms --proxy 10.1.1.1:8080\n"
      "  mmsbrix fetch --notification pushed.mms -o got.mms --proxy 10.1.1.1:8080");
  CLI::Option* url =
      fetch->add_option("URL", command.location, "Where the message is, as its notification says");
  CLI::Option* notification =
      fetch
          ->add_option("--notification", command.notificationFile,
                       "Take the URL from this m-notification-ind, - for standard input")
          ->type_name("FILE");
  CLI::Option* output = fetch
                            ->add_option("-o,--output", command.output,
                                         "Where the message goes, - for standard output")
                            ->type_name("FILE");
  fetch
      ->add_option("--url", command.url,
                   "The relay's URL for answers; without it they go where the message is")
      ->type_name("URL");
  CLI::Option* noAnswer = fetch->add_flag("--no-answer", command.noAnswer, "Send no answer");
  CLI::Option* defer =
      fetch->add_flag("--defer", command.defer, "Only answer the notification: fetched later");
  CLI::Option* reject =
      fetch->add_flag("--reject", command.reject, "Only answer the notification: not wanted");
  fetch
      ->add_option("--report-allowed", command.reportAllowed,
                   "Whether the sender may learn that the message was delivered")
      ->check(CLI::IsMember({"yes", "no"}));
  addSessionOptions(*fetch, command);
  notification->excludes(url);
  for (CLI::Option* only : {defer, reject}) {
    only->needs(notification)->excludes(noAnswer)->excludes(output);
  }
  defer->excludes(reject);
  fetch->final_callback([=, &command] {
    if (command.location.empty() && command.notificationFile.empty()) {
      throw CLI::RequiredError("URL or --notification");
    }
    if (command.output.empty() && !command.defer && !command.reject) {
      throw CLI::RequiredError("--output");
    }
  });
  return fetch;
}

int runFetch(const FetchCommand& given, const Streams& streams) {
  FetchCommand command = given;
  if (const int status = completeOptions(command, "fetch", streams); status != kDone) return status;
  HttpSession session(command, "fetch", "received", streams);
  return session.status() != kDone ? session.status() : Fetch(command, session, streams).run();
}

CLI::App* addReport(CLI::App& app, ReportCommand& command) {
  CLI::App* report = app.add_subcommand(
      "report", "Tell the sender of a received message, who asked for it, that it was read");
  report->footer("Example:\n  mmsbrix report got.mms --url http://mmsc.example/mms");
  report->add_option("FILE", command.file, "Received message, - for standard input")->required();
  report->add_option("--url", command.url, "The relay's URL, http or https")->type_name("URL");
  report->add_option("--from", command.from, "Own address; left to the relay when not given")
      ->type_name("ADDRESS");
  report->add_flag("--deleted", command.deleted, "It was deleted without being read");
  report->add_flag("--force", command.force, "Also when the sender did not ask");
  addSessionOptions(*report, command);
  return report;
}

int runReport(const ReportCommand& given, const Streams& streams) {
  ReportCommand command = given;
  if (const int status = completeOptions(command, "report", streams); status != kDone) {
    return status;
  }
  if (command.url.empty()) {
    streams.err << "mmsbrix report: --url, --operator or a profile is required\n";
    return kWrongUsage;
  }
  CMMsg message;
  if (!loadMessage(command.file, "report", streams, message)) return kFailed;
  const std::string file = command.file + ": ";
  if (message.GetMessageId() == nullptr || message.GetFrom()->Value()->Text().empty()) {
    return refuse(streams, "report", file + "has no message id or no sender to report to");
  }
  if (message.GetReadReply() != 1 && !command.force) {
    return refuse(streams, "report", file + "its sender did not ask for a report (--force)");
  }
  ReadRecInd report;
  report.messageId = message.GetMessageId();
  report.version = message.GetVersion();
  report.to = *message.GetFrom();
  report.date = static_cast<std::uint64_t>(std::time(nullptr));
  report.status = command.deleted ? ReadStatus::deletedUnread : ReadStatus::read;
  if (!command.from.empty()) {
    std::string error;
    const auto from = parseRecipient(command.from, false, error);
    if (!from) return refuse(streams, "report", error);
    report.from = *from;
  }
  HttpSession session(command, "report", "sent", streams);
  if (session.status() != kDone) return session.status();
  const std::vector<std::uint8_t> pdu = encodePdu(report);
  const bool posted = session.transport().PostReport(command.url.c_str(), pdu.data(), pdu.size());
  session.endProgress();
  if (!posted) return refuse(streams, "report", file + "not reported: " + session.result());
  streams.out << "reported: " << session.result() << '\n';
  return kDone;
}

}  // namespace mmsbrix::tool
