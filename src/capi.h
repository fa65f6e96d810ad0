/** @file
 * The C interface: messages composed, encoded, decoded, inspected, extracted, sent and fetched from
 * any language that can call C.
 *
 * Texts and octets are a pointer and a length.  A length of MMSBRIX_ZERO_TERMINATED means that a
 * text given to a function ends at its zero; a null pointer is the empty text.  All texts are UTF-8
 * but paths, which are the system's.
 *
 * Functions that can fail return a status, MMSBRIX_OK or the reason, and touch their results only
 * on MMSBRIX_OK unless they say otherwise.  No exception leaves them.  Texts and octets that are
 * handed out belong to the handle they came from, are followed by a zero that does not count, and
 * stay valid until that handle is changed or freed; those from functions named "encode" belong to
 * the caller, who releases them with mmsbrix_free.  Every "free" takes a null pointer.
 *
 * No handle is locked: one handle, one thread at a time.
 */
#ifndef MMSBRIX_CAPI_H
#define MMSBRIX_CAPI_H

#include <stddef.h>
#include <stdint.h>

#include "export.h"

#ifdef __cplusplus
extern "C" {
#endif

/** A length: the text ends at its zero. */
#define MMSBRIX_ZERO_TERMINATED SIZE_MAX

/** Why a function failed. */
typedef int32_t mmsbrix_status;
enum {
  MMSBRIX_OK = 0,
  MMSBRIX_INVALID_ARGUMENT = 1, /**< null where something is needed, a value that means nothing */
  MMSBRIX_NOT_PRESENT = 2,      /**< the message has no such field, part or parameter */
  MMSBRIX_NO_MEMORY = 3,
  MMSBRIX_CANNOT_READ = 4,  /**< a file */
  MMSBRIX_CANNOT_WRITE = 5, /**< a file */
  MMSBRIX_NOT_MMS = 6,      /**< the octets are no MMS PDU */
  MMSBRIX_INCOMPLETE = 7,   /**< the message has no recipient or no part, so it cannot be sent */
  MMSBRIX_FAILED = 8,       /**< the relay or the way to it; the transport's result says why */
  MMSBRIX_INTERNAL = 9,
  MMSBRIX_NOT_SUPPORTED = 10 /**< not on the way that the transport is set to */
};
/** What a status means, in English; static, never null. */
MMSBRIX_API const char* mmsbrix_status_text(mmsbrix_status status);
/** The version of the library that is loaded, "major.minor.patch"; static. */
MMSBRIX_API const char* mmsbrix_version(void);
/** Releases what an "encode" function handed out. */
MMSBRIX_API void mmsbrix_free(void* data);

/* ---- messages */

/** A message: header fields and parts. */
typedef struct mmsbrix_message mmsbrix_message;

/** Numbers of a message.  Enumerated ones are the octets of the standard. [OMA-MMS-ENC 7.2] */
typedef int32_t mmsbrix_number_field;
enum {
  MMSBRIX_MESSAGE_TYPE = 0x0C, /**< 0x80 m-send-req, 0x84 m-retrieve-conf, ... */
  MMSBRIX_MESSAGE_CLASS = 0x0A,
  MMSBRIX_PRIORITY = 0x0F,
  MMSBRIX_RESPONSE_STATUS = 0x12,
  MMSBRIX_DELIVERY_REPORT = 0x06,   /**< 1 yes, 0 no */
  MMSBRIX_READ_REPLY = 0x10,        /**< 1 yes, 0 no */
  MMSBRIX_SENDER_VISIBILITY = 0x14, /**< 1 show, 0 hide */
  MMSBRIX_DATE = 0x05,              /**< seconds since 1970; from 2001 on */
  MMSBRIX_EXPIRY = 0x08,            /**< seconds since 1970, from 2001 on */
  MMSBRIX_DELIVERY_TIME = 0x07,     /**< seconds since 1970, from 2001 on */
  MMSBRIX_EXPIRES_AFTER = 0x108,    /**< seconds; up to 65535 days; cannot be read back */
  MMSBRIX_DELIVERED_AFTER = 0x107   /**< seconds; up to 65535 days; cannot be read back */
};
/** Texts of a message. */
typedef int32_t mmsbrix_text_field;
enum {
  MMSBRIX_TRANSACTION_ID = 0x18,
  MMSBRIX_MESSAGE_ID = 0x0B,
  MMSBRIX_VERSION = 0x0D, /**< "major.minor" */
  MMSBRIX_SUBJECT = 0x16,
  MMSBRIX_RESPONSE_TEXT = 0x13,
  MMSBRIX_FROM = 0x09,     /**< an address, whose kind its text tells */
  MMSBRIX_BODY_TYPE = 0x04 /**< media type of the whole body */
};
/** Lists of recipients. */
typedef int32_t mmsbrix_recipient_list;
enum { MMSBRIX_TO = 0x17, MMSBRIX_CC = 0x02, MMSBRIX_BCC = 0x01 };
/** Kinds of addresses. */
typedef int32_t mmsbrix_address_kind;
enum {
  MMSBRIX_ADDRESS_OTHER = 0,
  MMSBRIX_ADDRESS_NUMBER = 1, /**< telephone number */
  MMSBRIX_ADDRESS_IPV4 = 2,
  MMSBRIX_ADDRESS_IPV6 = 3,
  MMSBRIX_ADDRESS_MAIL = 4,
  MMSBRIX_ADDRESS_BY_TEXT = 100 /**< when adding: what the text looks like */
};
/** Texts of a part; an absent one is MMSBRIX_NOT_PRESENT. */
typedef int32_t mmsbrix_part_text;
enum {
  MMSBRIX_PART_TYPE = 1, /**< media type without parameters */
  MMSBRIX_PART_NAME = 2, /**< Content-Location, else the parameter "name" */
  MMSBRIX_PART_ID = 3,   /**< Content-ID without angle brackets */
  MMSBRIX_PART_CHARSET = 4
};

/** An m-send-req of version 1.2 with a transaction id of its own; null without memory. */
MMSBRIX_API mmsbrix_message* mmsbrix_message_new(void);
/** Frees a message. */
MMSBRIX_API void mmsbrix_message_free(mmsbrix_message* message);
/** A new message from the octets of any MMS PDU.  What is broken or cut off leaves it filled with
 * what is there; mmsbrix_inspect says what was wrong. */
MMSBRIX_API mmsbrix_status mmsbrix_message_decode(const void* data, size_t size,
                                                  mmsbrix_message** message);
/** The same from a file. */
MMSBRIX_API mmsbrix_status mmsbrix_message_load(const char* path, size_t length,
                                                mmsbrix_message** message);
/** The octets of the message as an m-send-req, whatever its type.  A message that was composed by
 * attaching gets its multipart type: related when there is a part of type application/smil, which
 * then is its start, else mixed. */
MMSBRIX_API mmsbrix_status mmsbrix_message_encode(mmsbrix_message* message, void** data,
                                                  size_t* size);
/** The same into a file, which stays as it was when anything fails. */
MMSBRIX_API mmsbrix_status mmsbrix_message_save(mmsbrix_message* message, const char* path,
                                                size_t length);

/** Sets a number; MMSBRIX_INVALID_ARGUMENT for a value that the field cannot have. */
MMSBRIX_API mmsbrix_status mmsbrix_message_set_number(mmsbrix_message* message,
                                                      mmsbrix_number_field field, int64_t value);
/** Reads a number; MMSBRIX_NOT_PRESENT where it is not set. */
MMSBRIX_API mmsbrix_status mmsbrix_message_number(mmsbrix_message* message,
                                                  mmsbrix_number_field field, int64_t* value);
/** Sets a text; an empty sender is left to the relay. */
MMSBRIX_API mmsbrix_status mmsbrix_message_set_text(mmsbrix_message* message,
                                                    mmsbrix_text_field field, const char* text,
                                                    size_t length);
/** `text` and `length` receive the field's text. */
MMSBRIX_API mmsbrix_status mmsbrix_message_text(mmsbrix_message* message, mmsbrix_text_field field,
                                                const char** text, size_t* length);
/** MMSBRIX_INVALID_ARGUMENT also for a text whose kind cannot be told. */
MMSBRIX_API mmsbrix_status mmsbrix_message_add_recipient(mmsbrix_message* message,
                                                         mmsbrix_recipient_list list,
                                                         const char* text, size_t length,
                                                         mmsbrix_address_kind kind);
/** 0 for a null message or no such list. */
MMSBRIX_API size_t mmsbrix_message_recipient_count(mmsbrix_message* message,
                                                   mmsbrix_recipient_list list);
/** `kind` may be null. */
MMSBRIX_API mmsbrix_status mmsbrix_message_recipient(mmsbrix_message* message,
                                                     mmsbrix_recipient_list list, size_t index,
                                                     const char** text, size_t* length,
                                                     mmsbrix_address_kind* kind);

/** Adds a part of `size` octets.  `type` is its media type; null takes it from the name, and
 * "application/octet-stream" where that tells nothing.  `name` is unique in the message or made
 * so; null for one that is made up.  Texts should be UTF-8 and then say so. */
MMSBRIX_API mmsbrix_status mmsbrix_message_attach(mmsbrix_message* message, const void* data,
                                                  size_t size, const char* type, size_t type_length,
                                                  const char* name, size_t name_length);
/** The same from a file; without a name it is that of the file. */
MMSBRIX_API mmsbrix_status mmsbrix_message_attach_file(mmsbrix_message* message, const char* path,
                                                       size_t path_length, const char* type,
                                                       size_t type_length, const char* name,
                                                       size_t name_length);
/** What is shown at the same time; any of the texts may be null. */
typedef struct mmsbrix_slide {
  const char* text;               /**< zero-terminated, as are the paths */
  const char* image;              /**< path of a picture */
  const char* audio;              /**< path of a sound */
  uint32_t duration_milliseconds; /**< 0 leaves it to the recipient */
} mmsbrix_slide;
/** Makes `count` slides the body of the message; parts that it had are dropped. */
MMSBRIX_API mmsbrix_status mmsbrix_message_set_slides(mmsbrix_message* message,
                                                      const mmsbrix_slide* slides, size_t count);
/** Parts of the body; a body that is no multipart is one part. */
MMSBRIX_API size_t mmsbrix_message_part_count(mmsbrix_message* message);
/** A text of the part at a zero-based index; MMSBRIX_NOT_PRESENT past the last one too. */
MMSBRIX_API mmsbrix_status mmsbrix_message_part_text(mmsbrix_message* message, size_t index,
                                                     mmsbrix_part_text which, const char** text,
                                                     size_t* length);
/** The octets of a part as they stand in the message. */
MMSBRIX_API mmsbrix_status mmsbrix_message_part_data(mmsbrix_message* message, size_t index,
                                                     const void** data, size_t* size);
/** Makes `reply` go to everybody in `received` but the `own` address, with its subject; without one
 * (null) to all of them. */
MMSBRIX_API mmsbrix_status mmsbrix_message_reply_to(mmsbrix_message* reply,
                                                    mmsbrix_message* received, const char* own,
                                                    size_t own_length);

/* ---- extracting */

/** Files that were written. */
typedef struct mmsbrix_files mmsbrix_files;
/** Saves every part in a folder under a new, harmless name; nothing that exists is overwritten.
 * `files` tells what became of each part. */
MMSBRIX_API mmsbrix_status mmsbrix_message_extract(mmsbrix_message* message, const char* folder,
                                                   size_t length, mmsbrix_files** files);
/** Parts of the message, those included that gave no file; 0 for a null pointer. */
MMSBRIX_API size_t mmsbrix_files_count(const mmsbrix_files* files);
/** Path, media type and octets of a file; `error` is 0, or the system's error when the part could
 * not be saved, and its path then is empty.  Any result may be null. */
MMSBRIX_API mmsbrix_status mmsbrix_files_get(const mmsbrix_files* files, size_t index,
                                             const char** path, size_t* path_length,
                                             const char** type, size_t* type_length,
                                             uint64_t* octets, uint32_t* error);
/** Frees the list; the files stay. */
MMSBRIX_API void mmsbrix_files_free(mmsbrix_files* files);

/* ---- inspecting */

/** All that is in a PDU. */
typedef struct mmsbrix_inspection mmsbrix_inspection;
/** A field of the header block.  The texts belong to the inspection. */
typedef struct mmsbrix_field {
  uint64_t offset;     /**< of its first octet */
  uint64_t length;     /**< in octets */
  int32_t code;        /**< without the high bit, -1 for a header in text form */
  int32_t page;        /**< header code page; codes mean MMS fields on page 1 */
  const char* name;    /**< "X-Mms-Transaction-Id", say */
  size_t name_length;  /**< in octets */
  const char* value;   /**< for people */
  size_t value_length; /**< in octets */
} mmsbrix_field;
/** Something odd.  The text belongs to the inspection. */
typedef struct mmsbrix_remark {
  uint64_t offset;    /**< of what is odd, in octets */
  int32_t kind;       /**< position in the enumeration RemarkKind of mms/inspector.h */
  const char* text;   /**< for people */
  size_t text_length; /**< in octets */
} mmsbrix_remark;

/** Any octets are fine: what cannot be read becomes a remark. */
MMSBRIX_API mmsbrix_status mmsbrix_inspect(const void* data, size_t size,
                                           mmsbrix_inspection** inspection);
/** Frees an inspection with its texts. */
MMSBRIX_API void mmsbrix_inspection_free(mmsbrix_inspection* inspection);
/** The message type octet, 0 when there is none. */
MMSBRIX_API int32_t mmsbrix_inspection_type(const mmsbrix_inspection* inspection);
/** Fields of the header block; 0 for a null pointer. */
MMSBRIX_API size_t mmsbrix_inspection_field_count(const mmsbrix_inspection* inspection);
/** The field at a zero-based index, in the order of the PDU; MMSBRIX_NOT_PRESENT past the last. */
MMSBRIX_API mmsbrix_status mmsbrix_inspection_field(const mmsbrix_inspection* inspection,
                                                    size_t index, mmsbrix_field* field);
/** 0 for a PDU without anything odd, and for a null pointer. */
MMSBRIX_API size_t mmsbrix_inspection_remark_count(const mmsbrix_inspection* inspection);
/** The remark at a zero-based index, in the order of their offsets; MMSBRIX_NOT_PRESENT past the
 * last. */
MMSBRIX_API mmsbrix_status mmsbrix_inspection_remark(const mmsbrix_inspection* inspection,
                                                     size_t index, mmsbrix_remark* remark);

/* ---- sending and fetching */

/** The way to a relay, by HTTP or through a WAP gateway, and the result of what was done last. */
typedef struct mmsbrix_transport mmsbrix_transport;
/** Kinds of results. */
typedef int32_t mmsbrix_result_kind;
enum {
  MMSBRIX_RESULT_NONE = 0,
  MMSBRIX_RESULT_RESPONSE_STATUS = 1, /**< the relay's, 0x80 is Ok */
  MMSBRIX_RESULT_HTTP_STATUS = 2,
  MMSBRIX_RESULT_ERROR = 3,           /**< a WinINet or Win32 number, 12029 for no connection */
  MMSBRIX_RESULT_RETRIEVE_STATUS = 4, /**< the relay's, 0x80 is Ok */
  MMSBRIX_RESULT_WSP_STATUS = 5       /**< the WAP gateway's, 0x44 stands for HTTP's 404 */
};
/** What became of a message that was announced. */
typedef int32_t mmsbrix_delivery_status;
enum {
  MMSBRIX_EXPIRED = 0x80,
  MMSBRIX_RETRIEVED = 0x81,
  MMSBRIX_REJECTED = 0x82,
  MMSBRIX_DEFERRED = 0x83,
  MMSBRIX_UNRECOGNISED = 0x84
};

/** A direct connection without credentials; null without memory. */
MMSBRIX_API mmsbrix_transport* mmsbrix_transport_new(void);
/** Ends the session and frees the transport, with what was fetched. */
MMSBRIX_API void mmsbrix_transport_free(mmsbrix_transport* transport);
/** An HTTP proxy; an empty host is a direct connection. */
MMSBRIX_API mmsbrix_status mmsbrix_transport_set_proxy(mmsbrix_transport* transport,
                                                       const char* host, size_t length,
                                                       uint16_t port);
/** A WAP gateway (a name or an address) and its UDP port, usually 9201: messages then go by WSP
 * instead of HTTP.  An empty host is HTTP again.  Nothing but sending works through a gateway, and
 * of what can be set only the timeout and the size limit count there.  An exchange that a gateway
 * does not end has the error that HTTP would have: 12002 for its silence, 12029 for no session,
 * 12030 for one that broke. [WAP-230 7.1] */
MMSBRIX_API mmsbrix_status mmsbrix_transport_set_gateway(mmsbrix_transport* transport,
                                                         const char* host, size_t length,
                                                         uint16_t port);
/** The seconds, a day at most, after which an operation ends with the error 12002: by HTTP those
 * without an octet, through a gateway those until its answer.  0 is the default: 60 by HTTP,
 * through a gateway 45 of silence to a request and 600 for an answer. */
MMSBRIX_API mmsbrix_status mmsbrix_transport_set_timeout(mmsbrix_transport* transport,
                                                         uint32_t seconds);
/** User name and password for a proxy or relay that asks for them; empty for none. */
MMSBRIX_API mmsbrix_status mmsbrix_transport_set_credentials(mmsbrix_transport* transport,
                                                             const char* user, size_t user_length,
                                                             const char* password,
                                                             size_t password_length);
/** How the client is called, by which relays choose what they send; empty for the library's name.
 */
MMSBRIX_API mmsbrix_status mmsbrix_transport_set_user_agent(mmsbrix_transport* transport,
                                                            const char* agent, size_t length);
/** Adds a header to all requests; MMSBRIX_INVALID_ARGUMENT for those that the transport states
 * itself. */
MMSBRIX_API mmsbrix_status mmsbrix_transport_add_header(mmsbrix_transport* transport,
                                                        const char* name, size_t name_length,
                                                        const char* value, size_t value_length);
/** Trusts the certificates in a PEM file instead of the system's. */
MMSBRIX_API mmsbrix_status mmsbrix_transport_set_certificates(mmsbrix_transport* transport,
                                                              const char* path, size_t length);
/** Refuses larger messages before anything is sent; 0 for no limit. */
MMSBRIX_API mmsbrix_status mmsbrix_transport_set_size_limit(mmsbrix_transport* transport,
                                                            uint64_t octets);
/** Called with the octets that are done and their total, 0 when that is not known; anything but 0
 * cancels. */
typedef int32_t (*mmsbrix_progress)(void* context, uint64_t done, uint64_t total);
/** A null function ends it. */
MMSBRIX_API mmsbrix_status mmsbrix_transport_set_progress(mmsbrix_transport* transport,
                                                          mmsbrix_progress progress, void* context);

/** Submits a message; MMSBRIX_OK when the relay accepted it. */
MMSBRIX_API mmsbrix_status mmsbrix_transport_send(mmsbrix_transport* transport, const char* url,
                                                  size_t length, mmsbrix_message* message);
/** Submits octets as they are. */
MMSBRIX_API mmsbrix_status mmsbrix_transport_send_octets(mmsbrix_transport* transport,
                                                         const char* url, size_t length,
                                                         const void* data, size_t size);
/** Fetches a message into a new handle. */
MMSBRIX_API mmsbrix_status mmsbrix_transport_fetch(mmsbrix_transport* transport, const char* url,
                                                   size_t length, mmsbrix_message** message);
/** The octets of the message that was fetched last; they belong to the transport. */
MMSBRIX_API mmsbrix_status mmsbrix_transport_fetched(const mmsbrix_transport* transport,
                                                     const void** data, size_t* size);
/** Posts an answer, encoded by a function below, that the relay answers with an HTTP status only.
 */
MMSBRIX_API mmsbrix_status mmsbrix_transport_report(mmsbrix_transport* transport, const char* url,
                                                    size_t length, const void* data, size_t size);
/** The result of the last operation; any result may be null.  `text` is what the relay says,
 * `detail` what the code alone does not tell. */
MMSBRIX_API mmsbrix_status mmsbrix_transport_result(const mmsbrix_transport* transport,
                                                    mmsbrix_result_kind* kind, uint32_t* code,
                                                    const char** text, size_t* text_length,
                                                    const char** detail, size_t* detail_length);

/* ---- notifications, and what a receiver answers */

/** URL, transaction id and announced octets of an m-notification-ind; MMSBRIX_NOT_MMS for anything
 * else.  The texts are the caller's, to be released with mmsbrix_free. */
MMSBRIX_API mmsbrix_status mmsbrix_notification_decode(const void* data, size_t size, char** url,
                                                       char** transaction_id, uint64_t* octets);
/** An m-notifyresp-ind.  `report_allowed` is 1, 0, or -1 to leave it out. */
MMSBRIX_API mmsbrix_status mmsbrix_notifyresp_encode(const char* transaction_id, size_t length,
                                                     mmsbrix_delivery_status status,
                                                     int32_t report_allowed, void** data,
                                                     size_t* size);
/** An m-acknowledge-ind. */
MMSBRIX_API mmsbrix_status mmsbrix_acknowledge_encode(const char* transaction_id, size_t length,
                                                      int32_t report_allowed, void** data,
                                                      size_t* size);
/** An m-read-rec-ind for a received message: `read` is 1, or 0 when it was deleted unread. */
MMSBRIX_API mmsbrix_status mmsbrix_read_report_encode(mmsbrix_message* received, int32_t read,
                                                      void** data, size_t* size);

#ifdef __cplusplus
}
#endif

#endif /* MMSBRIX_CAPI_H */
