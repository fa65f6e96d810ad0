/* Composes a message with a text and a picture, submits it, and prints the result. */
#include <mmsbrix/capi.h>
#include <stdio.h>
#include <stdlib.h>

#define Z MMSBRIX_ZERO_TERMINATED

int main(int argc, char** argv) {
  if (argc != 6) return puts("usage: RECIPIENT PICTURE URL PROXY-HOST PROXY-PORT"), 2;
  mmsbrix_message* message = mmsbrix_message_new();
  mmsbrix_message_add_recipient(message, MMSBRIX_TO, argv[1], Z, MMSBRIX_ADDRESS_BY_TEXT);
  mmsbrix_message_set_text(message, MMSBRIX_SUBJECT, "Look!", Z);
  mmsbrix_message_attach_file(message, argv[2], Z, NULL, 0, NULL, 0);
  mmsbrix_transport* transport = mmsbrix_transport_new();
  mmsbrix_transport_set_proxy(transport, argv[4], Z, (uint16_t)atoi(argv[5]));
  mmsbrix_status status = mmsbrix_transport_send(transport, argv[3], Z, message);
  uint32_t code = 0;
  mmsbrix_transport_result(transport, NULL, &code, NULL, NULL, NULL, NULL);
  printf("%s: 0x%02X\n", mmsbrix_status_text(status), (unsigned)code);
  mmsbrix_transport_free(transport);
  mmsbrix_message_free(message);
  return status == MMSBRIX_OK ? 0 : 1;
}
