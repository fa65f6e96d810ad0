// Uses what an installation offers: a round trip, the inspector, and an exception from a list.
#include <mmsbrix/mmsbrix.h>

#include <cstdio>
#include <cstring>
#include <stdexcept>

int main() {
  CMMsg message;
  message.SetMsgType(CMMsg::MSG_TYPE_SEND_REQ);
  message.SetTransactionId(mmsbrix::version());
  CMMAddr to("+358401234567", CMMAddr::TYPE_PLMN);
  message.AddTo(&to);
  void* data = nullptr;
  unsigned int size = 0;
  if (MMS_SaveToMemory(&message, &data, &size, 0) != 1) return 1;
  CMMsg read;
  MMS_LoadFromMemory(data, size, &read, 0);
  const mmsbrix::Inspection inspection = mmsbrix::inspect(data, size);
  MMS_Free(data);
  if (std::strcmp(read.GetTransactionId(), mmsbrix::version()) != 0) return 2;
  if (inspection.messageTypeName != "m-send-req") return 3;
  try {
    read.GetTo()->Get(1);
    return 4;
  } catch (const std::out_of_range&) {
  }
  CMMSHttp transport;
  transport.ConnectGtw(nullptr, 0, 0);
  const bool sent = transport.SendMMS("http://127.0.0.1/", "no-such-file", 0);
  const unsigned long code = transport.GetResult(nullptr);
  transport.DisconnectGtw();
  if (sent || code != 2) return 5;
  std::puts("consumer: all well");
  return 0;
}
