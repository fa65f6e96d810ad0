// Makes a slide show of pictures, a caption below each, and saves it as a message.
#include <mmsbrix/mmsbrix.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

int main(int argc, char** argv) {
  if (argc < 4) return std::puts("usage: RECIPIENT OUTPUT PICTURE..."), 2;
  const auto recipient = mmsbrix::addressFromText(argv[1]);
  if (!recipient) return std::puts("the recipient is no address"), 2;

  std::vector<mmsbrix::Slide> slides;
  for (int i = 3; i < argc; ++i) {
    mmsbrix::Slide slide;
    slide.text = "Picture " + std::to_string(i - 2) + " of " + std::to_string(argc - 3);
    slide.image = argv[i];
    slide.duration = std::chrono::seconds(4);
    slides.push_back(slide);
  }
  CSMIL smil;
  mmsbrix::buildSlides(slides, smil);

  CMMsg message;
  message.SetMsgType(CMMsg::MSG_TYPE_SEND_REQ);
  message.SetTransactionId(mmsbrix::uniqueTransactionId().c_str());
  message.SetVersion("1.2");
  message.AddTo(&*recipient);
  if (MMS_SmilToMMS(&smil, &message, 0) != 1) return std::puts("a picture cannot be read"), 1;
  const unsigned octets = MMS_Save(&message, argv[2], 0);
  if (octets == 0) return std::puts("the message cannot be written"), 1;
  std::printf("%u parts, %u octets\n", message.Content()->ChildCount(), octets);
  return 0;
}
