// Seam: telling the user something without the host's help, where the platform has a way.
#ifndef MMSBRIX_PLATFORM_ALERT_H
#define MMSBRIX_PLATFORM_ALERT_H

#include <string>

namespace mmsbrix::platform {

/// Shows a message box and waits until it is dismissed; does nothing where there are none.
void showAlert(const std::string& caption, const std::string& text);

}  // namespace mmsbrix::platform

#endif  // MMSBRIX_PLATFORM_ALERT_H
