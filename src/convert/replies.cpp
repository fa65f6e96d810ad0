#include "convert/replies.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "model/address_text.h"

namespace mmsbrix {
namespace {

bool contains(std::span<const CMMAddr> addresses, const CMMAddr& address) {
  return std::ranges::any_of(addresses,
                             [&](const CMMAddr& one) { return sameSubscriber(one, address); });
}

}  // namespace

ReplyRecipients replyToAll(CMMsg& received, std::span<const CMMAddr> own) {
  // A conversation of more people than this is none, and each is held against all others.
  constexpr int kMostRecipients = 200;
  int looked = 0;
  ReplyRecipients reply;
  const auto add = [&](CMMAddrList& list, const CMMAddr& address) {
    if (address.Value()->Text().empty() || ++looked > kMostRecipients) return;
    const bool taken = contains(own, address) ||
                       contains({reply.to.begin(), reply.to.end()}, address) ||
                       contains({reply.cc.begin(), reply.cc.end()}, address);
    if (!taken) list.Add(&address);
  };
  add(reply.to, *received.GetFrom());
  for (const CMMAddr& address : *received.GetTo()) add(reply.to, address);
  for (const CMMAddr& address : *received.GetCc()) add(reply.cc, address);
  return reply;
}

CMMString replySubject(const CMMString& subject) {
  constexpr std::string_view kReply = "Re:";
  CMMString answer = subject;
  if (!subject.Text().starts_with(kReply)) {
    answer.Assign(std::string(kReply) + " " + std::string(subject.Text()));
  }
  return answer;
}

}  // namespace mmsbrix
