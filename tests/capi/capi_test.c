/* The C interface, from C: a message the whole way, and what its functions do with nonsense.
 *   capi_test RELAY-HOST RELAY-PORT MEDIA-FOLDER FOLDER */
#include <mmsbrix/capi.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#define Z MMSBRIX_ZERO_TERMINATED

static int failures = 0;

static void check(int good, const char* what, int line) {
  if (good) return;
  fprintf(stderr, "capi_test.c:%d: %s\n", line, what);
  ++failures;
}
#define CHECK(condition) check((condition) != 0, #condition, __LINE__)

static int same(const char* text, size_t length, const char* expected) {
  return length == strlen(expected) && memcmp(text, expected, length) == 0;
}

static mmsbrix_message* compose(const char* picture) {
  mmsbrix_message* message = mmsbrix_message_new();
  CHECK(mmsbrix_message_add_recipient(message, MMSBRIX_TO, "+358 40 222 2222!", 16,
                                      MMSBRIX_ADDRESS_BY_TEXT) == MMSBRIX_OK);
  CHECK(mmsbrix_message_add_recipient(message, MMSBRIX_CC, "ann@example.com", Z,
                                      MMSBRIX_ADDRESS_BY_TEXT) == MMSBRIX_OK);
  CHECK(mmsbrix_message_set_text(message, MMSBRIX_FROM, "+358401111111", Z) == MMSBRIX_OK);
  CHECK(mmsbrix_message_set_text(message, MMSBRIX_SUBJECT, "Hei \xC3\xA4", Z) == MMSBRIX_OK);
  CHECK(mmsbrix_message_set_number(message, MMSBRIX_EXPIRES_AFTER, 3600) == MMSBRIX_OK);
  CHECK(mmsbrix_message_attach(message, "Hello\0all", 9, "text/plain", Z, "a.txt", Z) ==
        MMSBRIX_OK);
  CHECK(mmsbrix_message_attach_file(message, picture, Z, NULL, 0, NULL, 0) == MMSBRIX_OK);
  CHECK(mmsbrix_message_attach_file(message, picture, Z, NULL, 0, NULL, 0) == MMSBRIX_OK);
  return message;
}

static void reads_back_what_was_composed(mmsbrix_message* message, const char* folder) {
  void* data = NULL;
  size_t size = 0, length = 0;
  const char* text = NULL;
  const void* octets = NULL;
  int64_t number = 0;
  mmsbrix_address_kind kind = 0;
  mmsbrix_message* read = NULL;
  mmsbrix_inspection* inspection = NULL;
  mmsbrix_field field;
  mmsbrix_files* files = NULL;
  uint64_t written = 0;

  CHECK(mmsbrix_message_encode(message, &data, &size) == MMSBRIX_OK);
  CHECK(mmsbrix_message_decode(data, size, &read) == MMSBRIX_OK);
  CHECK(mmsbrix_message_text(read, MMSBRIX_SUBJECT, &text, &length) == MMSBRIX_OK &&
        same(text, length, "Hei \xC3\xA4"));
  CHECK(mmsbrix_message_recipient(read, MMSBRIX_TO, 0, &text, &length, &kind) == MMSBRIX_OK &&
        same(text, length, "+358402222222") && kind == MMSBRIX_ADDRESS_NUMBER);
  CHECK(mmsbrix_message_recipient(read, MMSBRIX_TO, 1, &text, &length, NULL) ==
        MMSBRIX_NOT_PRESENT);
  CHECK(mmsbrix_message_recipient_count(read, MMSBRIX_CC) == 1);
  CHECK(mmsbrix_message_number(read, MMSBRIX_PRIORITY, &number) == MMSBRIX_NOT_PRESENT);
  CHECK(mmsbrix_message_part_count(read) == 3);
  CHECK(mmsbrix_message_part_data(read, 0, &octets, &length) == MMSBRIX_OK && length == 9 &&
        memcmp(octets, "Hello\0all", 9) == 0);
  CHECK(mmsbrix_message_part_text(read, 0, MMSBRIX_PART_CHARSET, &text, &length) == MMSBRIX_OK &&
        same(text, length, "utf-8"));
  CHECK(mmsbrix_message_part_text(read, 2, MMSBRIX_PART_ID, &text, &length) == MMSBRIX_OK &&
        same(text, length, "photo-2.jpg"));
  CHECK(mmsbrix_message_part_text(read, 1, MMSBRIX_PART_TYPE, &text, &length) == MMSBRIX_OK &&
        same(text, length, "image/jpeg"));
  CHECK(mmsbrix_message_part_text(read, 3, MMSBRIX_PART_TYPE, &text, &length) ==
        MMSBRIX_NOT_PRESENT);

  CHECK(mmsbrix_inspect(data, size, &inspection) == MMSBRIX_OK);
  CHECK(mmsbrix_inspection_type(inspection) == 0x80 &&
        mmsbrix_inspection_remark_count(inspection) == 0);
  CHECK(mmsbrix_inspection_field(inspection, 0, &field) == MMSBRIX_OK &&
        same(field.value, field.value_length, "m-send-req") && field.length == 2);
  mmsbrix_inspection_free(inspection);
  CHECK(mmsbrix_inspect(data, size - 1, &inspection) == MMSBRIX_OK &&
        mmsbrix_inspection_remark_count(inspection) == 1);
  mmsbrix_inspection_free(inspection);

  CHECK(mmsbrix_message_extract(read, folder, Z, &files) == MMSBRIX_OK &&
        mmsbrix_files_count(files) == 3);
  CHECK(mmsbrix_files_get(files, 0, &text, NULL, NULL, NULL, &written, NULL) == MMSBRIX_OK &&
        written == 9 && strstr(text, "a.txt") != NULL);
  mmsbrix_files_free(files);
  mmsbrix_message_free(read);
  mmsbrix_free(data);
}

/* The fields of a message; the first ones do not travel in an m-send-req.  Each value is another,
 * so that a field taken for another shows. */
enum { STAY = 2 };
static const struct {
  mmsbrix_number_field field;
  int64_t value;
} numbers[] = {{MMSBRIX_MESSAGE_TYPE, 0x81},   {MMSBRIX_RESPONSE_STATUS, 0x85},
               {MMSBRIX_MESSAGE_CLASS, 0x83},  {MMSBRIX_PRIORITY, 0x82},
               {MMSBRIX_DELIVERY_REPORT, 0},   {MMSBRIX_READ_REPLY, 1},
               {MMSBRIX_SENDER_VISIBILITY, 0}, {MMSBRIX_DATE, 1795257005},
               {MMSBRIX_EXPIRY, 1795257006},   {MMSBRIX_DELIVERY_TIME, 1795257007}};
static const struct {
  mmsbrix_text_field field;
  const char* value;
} texts[] = {{MMSBRIX_MESSAGE_ID, "M"}, {MMSBRIX_RESPONSE_TEXT, "\xC3\xA4"},
             {MMSBRIX_VERSION, "1.0"},  {MMSBRIX_TRANSACTION_ID, "T"},
             {MMSBRIX_SUBJECT, "S"},    {MMSBRIX_FROM, "a@b"}};

static void has_fields(mmsbrix_message* message, size_t first) {
  size_t i = 0, length = 0;
  int64_t number = 0;
  const char* text = NULL;
  for (i = first; i < sizeof numbers / sizeof *numbers; ++i) {
    CHECK(mmsbrix_message_number(message, numbers[i].field, &number) == MMSBRIX_OK &&
          number == numbers[i].value);
  }
  for (i = first; i < sizeof texts / sizeof *texts; ++i) {
    CHECK(mmsbrix_message_text(message, texts[i].field, &text, &length) == MMSBRIX_OK &&
          same(text, length, texts[i].value));
  }
}

static void fields_come_back(const char* picture) {
  mmsbrix_message* message = mmsbrix_message_new();
  mmsbrix_message* read = NULL;
  size_t i = 0, length = 0;
  int64_t number = 0;
  const char* text = NULL;
  mmsbrix_address_kind kind = 0, found = 0;
  for (i = 0; i < sizeof numbers / sizeof *numbers; ++i) {
    CHECK(mmsbrix_message_number(message, numbers[i].field, &number) ==
          (i == 0 ? MMSBRIX_OK : MMSBRIX_NOT_PRESENT));
    CHECK(mmsbrix_message_set_number(message, numbers[i].field, numbers[i].value) == MMSBRIX_OK);
  }
  for (i = 0; i < sizeof texts / sizeof *texts; ++i) {
    CHECK(mmsbrix_message_set_text(message, texts[i].field, texts[i].value, Z) == MMSBRIX_OK);
  }
  has_fields(message, 0);
  CHECK(mmsbrix_message_save(message, "m", Z) == MMSBRIX_INCOMPLETE);
  for (kind = MMSBRIX_ADDRESS_OTHER; kind <= MMSBRIX_ADDRESS_MAIL; ++kind) {
    CHECK(mmsbrix_message_add_recipient(message, MMSBRIX_BCC, "1", Z, kind) == MMSBRIX_OK);
    CHECK(mmsbrix_message_recipient(message, MMSBRIX_BCC, (size_t)kind, NULL, NULL, &found) ==
              MMSBRIX_OK &&
          found == kind);
  }
  CHECK(mmsbrix_message_add_recipient(message, MMSBRIX_BCC, "1", Z, kind) ==
        MMSBRIX_INVALID_ARGUMENT);
  CHECK(mmsbrix_message_attach(message, "x", 1, "text/plain", Z, "x", Z) == MMSBRIX_OK);
  CHECK(mmsbrix_message_attach(message, "<smil/>", 7, "application/smil", Z, "s", Z) == MMSBRIX_OK);
  CHECK(mmsbrix_message_save(message, "no/m", Z) == MMSBRIX_CANNOT_WRITE);
  CHECK(mmsbrix_message_save(message, "m", Z) == MMSBRIX_OK);
  CHECK(mmsbrix_message_load("m", Z, &read) == MMSBRIX_OK);
  has_fields(read, STAY);
  CHECK(mmsbrix_message_text(read, MMSBRIX_BODY_TYPE, &text, &length) == MMSBRIX_OK &&
        same(text, length, "application/vnd.wap.multipart.related"));
  CHECK(mmsbrix_message_load(picture, Z, &read) == MMSBRIX_NOT_MMS);
  mmsbrix_message_free(read);

  /* An interval stands where the instant stood. */
  CHECK(mmsbrix_message_set_number(message, MMSBRIX_DELIVERED_AFTER, 60) == MMSBRIX_OK);
  CHECK(mmsbrix_message_number(message, MMSBRIX_DELIVERED_AFTER, &number) == MMSBRIX_OK &&
        number == 60);
  CHECK(mmsbrix_message_number(message, MMSBRIX_DELIVERY_TIME, &number) == MMSBRIX_NOT_PRESENT);
  mmsbrix_message_free(message);

  /* What was received without a transaction id and with one part only. */
  CHECK(mmsbrix_message_decode("\x8C\x84\x97+1\0\x84\x83x", 9, &message) == MMSBRIX_OK);
  CHECK(mmsbrix_message_attach(message, "x", 1, NULL, 0, NULL, 0) == MMSBRIX_INVALID_ARGUMENT);
  CHECK(mmsbrix_message_save(message, "m", Z) == MMSBRIX_OK);
  CHECK(mmsbrix_message_load("m", Z, &read) == MMSBRIX_OK);
  CHECK(mmsbrix_message_number(read, MMSBRIX_MESSAGE_TYPE, &number) == MMSBRIX_OK &&
        number == 0x80);
  CHECK(mmsbrix_message_text(read, MMSBRIX_TRANSACTION_ID, &text, &length) == MMSBRIX_OK &&
        length > 0);
  mmsbrix_message_free(read);
  mmsbrix_message_free(message);
}

static int32_t cancel(void* context, uint64_t done, uint64_t total) {
  (void)done;
  (void)total;
  ++*(int*)context;
  return 1;
}

static void goes_to_the_relay(mmsbrix_message* message, const char* host, uint16_t port) {
  mmsbrix_transport* transport = mmsbrix_transport_new();
  mmsbrix_result_kind kind = 0;
  uint32_t code = 0;
  const char* text = NULL;
  size_t length = 0;
  const void* octets = NULL;
  int calls = 0;
  mmsbrix_message* none = NULL;
  static const char url[] = "http://mmsc.example/mms";

  mmsbrix_transport_set_proxy(transport, host, Z, port);
  CHECK(mmsbrix_transport_add_header(transport, "X-A", Z, "b", Z) == MMSBRIX_OK);
  CHECK(mmsbrix_transport_add_header(transport, "Host", Z, "b", Z) == MMSBRIX_INVALID_ARGUMENT);
  CHECK(mmsbrix_transport_set_user_agent(transport, "a\nb: c", Z) == MMSBRIX_INVALID_ARGUMENT);
  CHECK(mmsbrix_transport_set_user_agent(transport, "Phone/2", Z) == MMSBRIX_OK);
  CHECK(mmsbrix_transport_send(transport, url, Z, message) == MMSBRIX_OK);
  mmsbrix_transport_result(transport, &kind, &code, NULL, NULL, NULL, NULL);
  CHECK(kind == MMSBRIX_RESULT_RESPONSE_STATUS && code == 0x80);

  mmsbrix_transport_set_size_limit(transport, 10);
  CHECK(mmsbrix_transport_send(transport, url, Z, message) == MMSBRIX_FAILED);
  mmsbrix_transport_result(transport, &kind, &code, NULL, NULL, &text, &length);
  CHECK(kind == MMSBRIX_RESULT_ERROR && code == 223 && length == strlen(text) && length > 0);
  mmsbrix_transport_set_size_limit(transport, 0);

  mmsbrix_transport_set_progress(transport, cancel, &calls);
  CHECK(mmsbrix_transport_send(transport, url, Z, message) == MMSBRIX_FAILED && calls == 1);
  mmsbrix_transport_result(transport, NULL, &code, NULL, NULL, NULL, NULL);
  CHECK(code == 12017);
  mmsbrix_transport_set_progress(transport, NULL, NULL);

  CHECK(mmsbrix_transport_fetch(transport, "http://mmsc.example/message/none", Z, &none) ==
            MMSBRIX_FAILED &&
        none == NULL);
  mmsbrix_transport_result(transport, &kind, &code, NULL, NULL, NULL, NULL);
  CHECK(kind == MMSBRIX_RESULT_HTTP_STATUS && code == 404);
  CHECK(mmsbrix_transport_fetched(transport, &octets, &length) == MMSBRIX_NOT_PRESENT);
  mmsbrix_transport_free(transport);
}

/* The address of the relay's WAP gateway stands in its log, which is written in due course. */
static int find_gateway(char* host, unsigned* port) {
  const time_t begin = time(NULL);
  int found = 0;
  while (!found && time(NULL) < begin + 10) {
    char line[200];
    FILE* log = fopen("relay.log", "r");
    while (!found && log != NULL && fgets(line, sizeof line, log) != NULL) {
      found = sscanf(line, "listening on wap://%63[^:]:%u", host, port) == 2;
    }
    if (log != NULL) fclose(log);
  }
  return found;
}

static void goes_through_a_gateway(mmsbrix_message* message) {
  mmsbrix_transport* transport = mmsbrix_transport_new();
  mmsbrix_message* none = NULL;
  mmsbrix_result_kind kind = 0;
  uint32_t code = 0;
  const char* text = NULL;
  size_t length = 0;
  char host[64];
  unsigned port = 0;
  int i = 0;
  static const char url[] = "http://mmsc.example/mms";
  CHECK(find_gateway(host, &port));
  CHECK(mmsbrix_transport_set_gateway(transport, host, Z, (uint16_t)port) == MMSBRIX_OK);
  for (i = 0; i < 2; ++i) { /* in one session */
    CHECK(mmsbrix_transport_send(transport, url, Z, message) == MMSBRIX_OK);
    mmsbrix_transport_result(transport, &kind, &code, NULL, NULL, NULL, NULL);
    CHECK(kind == MMSBRIX_RESULT_RESPONSE_STATUS && code == 0x80);
  }
  CHECK(mmsbrix_transport_fetch(transport, url, Z, &none) == MMSBRIX_NOT_SUPPORTED);

  mmsbrix_transport_set_size_limit(transport, 10);
  CHECK(mmsbrix_transport_send(transport, url, Z, message) == MMSBRIX_FAILED);
  mmsbrix_transport_result(transport, &kind, &code, NULL, NULL, &text, &length);
  CHECK(kind == MMSBRIX_RESULT_ERROR && code == 223 && length > 0);
  mmsbrix_transport_set_size_limit(transport, 0);

  /* Nobody listens at the discard port. */
  mmsbrix_transport_set_gateway(transport, host, Z, 9);
  CHECK(mmsbrix_transport_set_timeout(transport, 1) == MMSBRIX_OK);
  CHECK(mmsbrix_transport_send(transport, url, Z, message) == MMSBRIX_FAILED);
  mmsbrix_transport_result(transport, &kind, &code, NULL, NULL, &text, &length);
  CHECK(kind == MMSBRIX_RESULT_ERROR && code == 12002 && strstr(text, "does not answer") != NULL);
  mmsbrix_transport_set_gateway(transport, "no.such.host.invalid", Z, 9201);
  CHECK(mmsbrix_transport_send(transport, url, Z, message) == MMSBRIX_FAILED);
  mmsbrix_transport_result(transport, &kind, &code, NULL, NULL, NULL, NULL);
  CHECK(kind == MMSBRIX_RESULT_ERROR && code == 12029);
  mmsbrix_transport_free(transport);
}

static void answers_are_encoded(void) {
  static const unsigned char notification[] =
      "\x8C\x82\x98N\0\x8D\x92\x8A\x80\x8E\x01\x05\x88\x03\x81\x01\x05\x83http://h/1";
  char *url = NULL, *transaction = NULL;
  uint64_t octets = 0;
  void* data = NULL;
  size_t size = 0;
  CHECK(mmsbrix_notification_decode(notification, sizeof notification, &url, &transaction,
                                    &octets) == MMSBRIX_OK);
  CHECK(strcmp(url, "http://h/1") == 0 && strcmp(transaction, "N") == 0 && octets == 5);
  CHECK(mmsbrix_notifyresp_encode(transaction, Z, MMSBRIX_RETRIEVED, 0, &data, &size) ==
        MMSBRIX_OK);
  CHECK(size == 11 && memcmp(data, "\x8C\x83\x98N\0\x8D\x92\x95\x81\x91\x81", 11) == 0);
  mmsbrix_free(data);
  mmsbrix_free(url);
  mmsbrix_free(transaction);
}

static void nonsense_is_refused(void) {
  mmsbrix_transport* transport = mmsbrix_transport_new();
  mmsbrix_message* message = mmsbrix_message_new();
  mmsbrix_message* none = NULL;
  void* data = NULL;
  size_t size = 0;
  const char* text = NULL;
  CHECK(mmsbrix_message_decode("hello", 5, &none) == MMSBRIX_NOT_MMS);
  CHECK(mmsbrix_message_decode(NULL, 5, &none) == MMSBRIX_INVALID_ARGUMENT);
  CHECK(mmsbrix_message_load("/none", Z, &none) == MMSBRIX_CANNOT_READ && none == NULL);
  CHECK(mmsbrix_message_encode(message, &data, &size) == MMSBRIX_INCOMPLETE && data == NULL);
  CHECK(mmsbrix_message_encode(NULL, &data, &size) == MMSBRIX_INVALID_ARGUMENT);
  CHECK(mmsbrix_message_set_number(message, 999, 0x80) == MMSBRIX_INVALID_ARGUMENT);
  CHECK(mmsbrix_message_set_number(message, MMSBRIX_PRIORITY, 1) == MMSBRIX_INVALID_ARGUMENT);
  CHECK(mmsbrix_message_set_number(message, MMSBRIX_DATE, 5) == MMSBRIX_INVALID_ARGUMENT);
  CHECK(mmsbrix_message_set_text(message, MMSBRIX_SUBJECT, "\xFF", 1) == MMSBRIX_INVALID_ARGUMENT);
  CHECK(mmsbrix_message_set_text(message, MMSBRIX_FROM, "who?", Z) == MMSBRIX_INVALID_ARGUMENT);
  CHECK(mmsbrix_message_text(message, MMSBRIX_SUBJECT, &text, &size) == MMSBRIX_NOT_PRESENT);
  CHECK(mmsbrix_message_add_recipient(message, 77, "a@b", Z, MMSBRIX_ADDRESS_BY_TEXT) ==
        MMSBRIX_INVALID_ARGUMENT);
  CHECK(mmsbrix_message_attach_file(message, "/none", Z, NULL, 0, NULL, 0) == MMSBRIX_CANNOT_READ);
  CHECK(mmsbrix_message_set_text(message, 999, "x", Z) == MMSBRIX_INVALID_ARGUMENT);
  CHECK(mmsbrix_message_set_text(message, MMSBRIX_VERSION, "new", Z) == MMSBRIX_INVALID_ARGUMENT);
  CHECK(mmsbrix_message_text(message, 999, &text, &size) == MMSBRIX_INVALID_ARGUMENT);
  CHECK(mmsbrix_message_part_text(message, 0, 5, &text, &size) == MMSBRIX_INVALID_ARGUMENT);
  CHECK(mmsbrix_transport_send(transport, "http://h/", Z, message) == MMSBRIX_INCOMPLETE);
  CHECK(mmsbrix_transport_send_octets(transport, NULL, 0, "x", 1) == MMSBRIX_INVALID_ARGUMENT);
  CHECK(mmsbrix_notification_decode(NULL, 0, NULL, NULL, NULL) == MMSBRIX_INVALID_ARGUMENT);
  CHECK(mmsbrix_read_report_encode(message, 1, &data, &size) == MMSBRIX_NOT_PRESENT);
  mmsbrix_transport_free(transport);
  mmsbrix_message_free(message);
  mmsbrix_message_free(NULL);
  mmsbrix_transport_free(NULL);
  mmsbrix_files_free(NULL);
  mmsbrix_inspection_free(NULL);
}

static void slides_become_a_presentation(const char* picture) {
  const mmsbrix_slide slides[] = {{"Look", picture, NULL, 3000}, {"Bye", NULL, NULL, 1000}};
  mmsbrix_message* message = mmsbrix_message_new();
  const char* text = NULL;
  size_t length = 0;
  CHECK(mmsbrix_message_set_slides(message, slides, 2) == MMSBRIX_OK);
  CHECK(mmsbrix_message_text(message, MMSBRIX_BODY_TYPE, &text, &length) == MMSBRIX_OK &&
        same(text, length, "application/vnd.wap.multipart.related"));
  CHECK(mmsbrix_message_part_count(message) == 4);
  mmsbrix_message_free(message);
}

static void each_status_has_its_text(void) {
  int i = 0, j = 0;
  for (i = MMSBRIX_OK; i <= MMSBRIX_NOT_SUPPORTED; ++i) {
    CHECK(mmsbrix_status_text(i)[0] != '\0');
    for (j = MMSBRIX_OK; j < i; ++j) {
      CHECK(strcmp(mmsbrix_status_text(i), mmsbrix_status_text(j)) != 0);
    }
  }
}

int main(int argc, char** argv) {
  char picture[4096];
  mmsbrix_message* message = NULL;
  if (argc != 5) return 2;
  snprintf(picture, sizeof picture, "%s/photo.jpg", argv[3]);
  message = compose(picture);
  reads_back_what_was_composed(message, argv[4]);
  fields_come_back(picture);
  goes_to_the_relay(message, argv[1], (uint16_t)atoi(argv[2]));
  goes_through_a_gateway(message);
  mmsbrix_message_free(message);
  slides_become_a_presentation(picture);
  answers_are_encoded();
  nonsense_is_refused();
  each_status_has_its_text();
  CHECK(mmsbrix_version()[0] != '\0');
  printf("%d failures\n", failures);
  return failures == 0 ? 0 : 1;
}
