// Rows of the content types.  [WAP-230 Appendix A, table 40]
#ifndef MMSBRIX_WSP_WSP_ASSIGNED_CONTENT_TYPES_H
#define MMSBRIX_WSP_WSP_ASSIGNED_CONTENT_TYPES_H

#include <array>

#include "wsp/wsp_assigned_headers.h"

namespace WapAssignments {

// clang-format off
/// Content types in code order; the spellings are kept as assigned.
inline constexpr auto kContentTypeRows = std::to_array<StringInt>({
    {"*/*", row(kVersion11, 0x00)},
    {"text/*", row(kVersion11, 0x01)},
    {"text/html", row(kVersion11, 0x02)},
    {"text/plain", row(kVersion11, 0x03)},
    {"text/x-hdml", row(kVersion11, 0x04)},
    {"text/x-ttml", row(kVersion11, 0x05)},
    {"text/x-vCalendar", row(kVersion11, 0x06)},
    {"text/x-vCard", row(kVersion11, 0x07)},
    {"text/vnd.wap.wml", row(kVersion11, 0x08)},
    {"text/vnd.wap.wmlscript", row(kVersion11, 0x09)},
    {"application/vnd.wap.catc", row(kVersion11, 0x0A)},
    {"Multipart/*", row(kVersion11, 0x0B)},
    {"Multipart/mixed", row(kVersion11, 0x0C)},
    {"Multipart/form-data", row(kVersion11, 0x0D)},
    {"Multipart/byteranges", row(kVersion11, 0x0E)},
    {"multipart/alternative", row(kVersion11, 0x0F)},
    {"application/*", row(kVersion11, 0x10)},
    {"application/java-vm", row(kVersion11, 0x11)},
    {"application/x-www-form-urlencoded", row(kVersion11, 0x12)},
    {"application/x-hdmlc", row(kVersion11, 0x13)},
    {"application/vnd.wap.wmlc", row(kVersion11, 0x14)},
    {"application/vnd.wap.wmlscriptc", row(kVersion11, 0x15)},
    {"application/vnd.wap.wsic", row(kVersion11, 0x16)},
    {"application/vnd.wap.uaprof", row(kVersion11, 0x17)},
    {"application/vnd.wap.wtls-ca-certificate", row(kVersion11, 0x18)},
    {"application/vnd.wap.wtls-user-certificate", row(kVersion11, 0x19)},
    {"application/x-x509-ca-cert", row(kVersion11, 0x1A)},
    {"application/x-x509-user-cert", row(kVersion11, 0x1B)},
    {"image/*", row(kVersion11, 0x1C)},
    {"image/gif", row(kVersion11, 0x1D)},
    {"image/jpeg", row(kVersion11, 0x1E)},
    {"image/tiff", row(kVersion11, 0x1F)},
    {"image/png", row(kVersion11, 0x20)},
    {"image/vnd.wap.wbmp", row(kVersion11, 0x21)},
    {"application/vnd.wap.multipart.*", row(kVersion11, 0x22)},
    {"application/vnd.wap.multipart.mixed", row(kVersion11, 0x23)},
    {"application/vnd.wap.multipart.form-data", row(kVersion11, 0x24)},
    {"application/vnd.wap.multipart.byteranges", row(kVersion11, 0x25)},
    {"application/vnd.wap.multipart.alternative", row(kVersion11, 0x26)},
    {"application/xml", row(kVersion11, 0x27)},
    {"text/xml", row(kVersion11, 0x28)},
    {"application/vnd.wap.wbxml", row(kVersion11, 0x29)},
    {"application/x-x968-cross-cert", row(kVersion11, 0x2A)},
    {"application/x-x968-ca-cert", row(kVersion11, 0x2B)},
    {"application/x-x968-user-cert", row(kVersion11, 0x2C)},
    {"text/vnd.wap.si", row(kVersion11, 0x2D)},
    {"application/vnd.wap.sic", row(kVersion12, 0x2E)},
    {"text/vnd.wap.sl", row(kVersion12, 0x2F)},
    {"application/vnd.wap.slc", row(kVersion12, 0x30)},
    {"text/vnd.wap.co", row(kVersion12, 0x31)},
    {"application/vnd.wap.coc", row(kVersion12, 0x32)},
    {"application/vnd.wap.multipart.related", row(kVersion12, 0x33)},
    {"application/vnd.wap.sia", row(kVersion12, 0x34)},
    {"text/vnd.wap.connectivity-xml", row(kVersion13, 0x35)},
    {"application/vnd.wap.connectivity-wbxml", row(kVersion13, 0x36)},
    {"application/pkcs7-mime", row(kVersion14, 0x37)},
    {"application/vnd.wap.hashed-certificate", row(kVersion14, 0x38)},
    {"application/vnd.wap.signed-certificate", row(kVersion14, 0x39)},
    {"application/vnd.wap.cert-response", row(kVersion14, 0x3A)},
    {"application/xhtml+xml", row(kVersion14, 0x3B)},
    {"application/wml+xml", row(kVersion14, 0x3C)},
    {"text/css", row(kVersion14, 0x3D)},
    {"application/vnd.wap.mms-message", row(kVersion14, 0x3E)},
    {"application/vnd.wap.rollover-certificate", row(kVersion14, 0x3F)},
    {"application/vnd.wap.locc+wbxml", row(kVersion15, 0x40)},
    {"application/vnd.wap.loc+xml", row(kVersion15, 0x41)},
    {"application/vnd.syncml.dm+wbxml", row(kVersion15, 0x42)},
    {"application/vnd.syncml.dm+xml", row(kVersion15, 0x43)},
    {"application/vnd.syncml.notification", row(kVersion15, 0x44)},
    {"application/vnd.wap.xhtml+xml", row(kVersion15, 0x45)},
    {"application/vnd.wv.csp.cir", row(kVersion15, 0x46)},
    {"application/vnd.oma.dd+xml", row(kVersion15, 0x47)},
    {"application/vnd.oma.drm.message", row(kVersion15, 0x48)},
    {"application/vnd.oma.drm.content", row(kVersion15, 0x49)},
    {"application/vnd.oma.drm.rights+xml", row(kVersion15, 0x4A)},
    {"application/vnd.oma.drm.rights+wbxml", row(kVersion15, 0x4B)},
    {"application/vnd.wv.csp+xml", row(kVersion15, 0x4C)},
    {"application/vnd.wv.csp+wbxml", row(kVersion15, 0x4D)},
});
static_assert(kContentTypeRows.size() == 78);

/// Registered content types.  They do not fit a short-integer.
inline constexpr auto kRegisteredContentTypeRows = std::to_array<StringInt>({
    {"application/vnd.uplanet.cacheop-wbxml", 0x201},
    {"application/vnd.uplanet.signal", 0x202},
    {"application/vnd.uplanet.alert-wbxml", 0x203},
    {"application/vnd.uplanet.list-wbxml", 0x204},
    {"application/vnd.uplanet.listcmd-wbxml", 0x205},
    {"application/vnd.uplanet.channel-wbxml", 0x206},
    {"application/vnd.uplanet.provisioning-status-uri", 0x207},
    {"x-wap.multipart/vnd.uplanet.header-set", 0x208},
    {"application/vnd.uplanet.bearer-choice-wbxml", 0x209},
    {"application/vnd.phonecom.mmc-wbxml", 0x20A},
    {"application/vnd.nokia.syncset+wbxml", 0x20B},
});
static_assert(kRegisteredContentTypeRows.size() == 11);

// clang-format on

}  // namespace WapAssignments

#endif  // MMSBRIX_WSP_WSP_ASSIGNED_CONTENT_TYPES_H
