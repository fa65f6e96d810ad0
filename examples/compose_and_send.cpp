// Composes a message with a text and a picture, saves it and submits it through an HTTP proxy.
// compose_and_send RECIPIENT PICTURE URL PROXY-HOST PROXY-PORT
#include <mmsbrix/mmsbrix.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
  if (argc != 6) return std::puts("usage: RECIPIENT PICTURE URL PROXY-HOST PROXY-PORT"), 2;
  CMMsg message;
  message.SetMsgType(CMMsg::MSG_TYPE_SEND_REQ);
  message.SetTransactionId("T-1");
  message.SetVersion("1.2");
  CMMAddr to(argv[1], CMMAddr::TYPE_PLMN);
  message.AddTo(&to);
  CMMString subject("Look!", "utf-8");
  message.SetSubject(&subject);
  CMMHdr mixed("Content-Type", "application/vnd.wap.multipart.mixed");
  message.Content()->Headers()->Add(&mixed);
  CMMHdr jpeg("Content-Type", "image/jpeg");
  CMMPart* picture = message.Content()->NewChild();
  picture->Headers()->Add(&jpeg);
  if (!picture->Load(argv[2]) || MMS_Save(&message, "message.mms", 0) == 0) return 1;
  CMMSHttp transport;
  transport.ConnectGtw(argv[4], static_cast<unsigned>(std::atoi(argv[5])), 0);
  const bool sent = transport.SendMMS(argv[3], "message.mms", 0);
  char text[512];
  const unsigned long code = transport.GetResult(text);
  transport.DisconnectGtw();
  std::printf("%s: 0x%02lX %s\n", sent ? "sent" : "not sent", code, text);
  return sent ? 0 : 1;
}
