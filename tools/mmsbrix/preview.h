// The subcommand `preview`: a message as one page for a browser.
#ifndef MMSBRIX_TOOLS_PREVIEW_H
#define MMSBRIX_TOOLS_PREVIEW_H

#include <mmsbrix/model/mmsg.h>

#include <CLI/App.hpp>
#include <string>

#include "command.h"
#include "preview_page.h"

namespace mmsbrix::tool {

/// The command line of `preview`.
struct PreviewCommand {
  std::string file{};
  std::string output{};
};

/// Adds the subcommand to a parser; `command` receives what is given and must outlive it.
CLI::App* addPreview(CLI::App& app, PreviewCommand& command);

/// Writes the page.
int runPreview(const PreviewCommand& command, const Streams& streams);

/// What the page of a message shows: header fields, the slides of its presentation, other parts.
[[nodiscard]] PreviewPage describePage(CMMsg& message);

}  // namespace mmsbrix::tool

#endif  // MMSBRIX_TOOLS_PREVIEW_H
