#include "manual.h"

#include <mmsbrix/mms/inspector.h>
#include <mmsbrix/version.h>

#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <filesystem>
#include <ostream>
#include <sstream>
#include <string_view>
#include <vector>

#include "host.h"

namespace mmsbrix::tool {
namespace {

using Apps = std::vector<const CLI::App*>;

Apps subcommandsOf(const CLI::App& app) {
  Apps all = app.get_subcommands([](const CLI::App*) { return true; });
  std::erase_if(all, [](const CLI::App* one) { return one->get_group().empty(); });
  return all;
}

std::vector<const CLI::Option*> optionsOf(const CLI::App& app, bool positional) {
  std::vector<const CLI::Option*> all = app.get_options([&](const CLI::Option* option) {
    return option->get_positional() == positional && !option->get_group().empty();
  });
  return all;
}

// Text for roff: hyphens that can be typed, and no line that begins as a request.
std::string roff(std::string_view text) {
  std::string result;
  bool lineBegins = true;
  for (const char c : text) {
    if (lineBegins && (c == '.' || c == '\'')) result += "\\&";
    if (c == '\\') {
      result += "\\e";
    } else if (c == '-') {
      result += "\\-";
    } else {
      result += c;
    }
    lineBegins = c == '\n';
  }
  return result;
}

std::string valueOf(const CLI::Option& option) {
  if (option.get_items_expected_max() == 0) return "";
  const std::string type = option.get_type_name();
  return type.empty() ? "VALUE" : type;
}

void writeOptions(const CLI::App& app, std::ostream& out) {
  for (const CLI::Option* argument : optionsOf(app, true)) {
    out << ".TP\n.I " << roff(argument->get_name(true)) << '\n'
        << roff(argument->get_description()) << '\n';
  }
  for (const CLI::Option* option : optionsOf(app, false)) {
    std::string names = option->get_name(false, true);
    if (const std::size_t comma = names.find(','); comma != std::string::npos) {
      names.replace(comma, 1, ", ");
    }
    out << ".TP\n.B " << roff(names);
    if (const std::string value = valueOf(*option); !value.empty()) {
      out << " \\fI" << roff(value) << "\\fR";
    }
    out << '\n' << roff(option->get_description()) << '\n';
    if (const std::string preset = option->get_default_str(); !preset.empty()) {
      out << "(by default " << roff(preset) << ")\n";
    }
  }
}

// The examples and remarks behind the options, as they stand.
void writeFooter(const CLI::App& app, std::ostream& out) {
  const std::string footer = app.get_footer();
  if (footer.empty()) return;
  const bool examples = footer.starts_with("Example");
  out << (examples ? ".SH EXAMPLES\n" : ".SH NOTES\n") << ".nf\n";
  out << roff(examples ? footer.substr(footer.find('\n') + 1) : footer) << "\n.fi\n";
}

void writeHead(const std::string& title, const std::string& what, std::ostream& out) {
  std::string upper = title;
  for (char& c : upper) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  out << ".TH " << roff(upper) << " 1 \"\" \"mmsbrix " << version() << "\" \"User Commands\"\n"
      << ".SH NAME\n"
      << roff(title) << " \\- " << roff(what) << "\n.SH SYNOPSIS\n";
}

void writeSynopsis(const CLI::App& app, const std::string& command, std::ostream& out) {
  out << ".B " << roff(command) << "\n[\\fIOPTIONS\\fR]";
  for (const CLI::Option* argument : optionsOf(app, true)) {
    const std::string name = "\\fI" + roff(argument->get_name(true)) + "\\fR";
    out << ' ' << (argument->get_required() ? name : "[" + name + "]");
  }
  out << '\n';
}

void writeProgramPage(const CLI::App& app, std::ostream& out) {
  writeHead("mmsbrix", "multimedia messages (MMS)", out);
  out << ".B mmsbrix\n.I SUBCOMMAND\n[\\fIOPTIONS\\fR]\n.SH DESCRIPTION\n"
      << roff(app.get_description()) << ".\n.SH SUBCOMMANDS\n";
  for (const CLI::App* one : subcommandsOf(app)) {
    out << ".TP\n.BR mmsbrix\\-" << roff(one->get_name()) << " (1)\n"
        << roff(one->get_description()) << '\n';
  }
  out << ".SH OPTIONS\n";
  writeOptions(app, out);
  out << ".SH EXIT STATUS\n0 done, 1 refused or failed with the reason on standard error, 2 wrong "
         "usage.\n"
         ".SH ENVIRONMENT\n.TP\n.BR MMSBRIX_USER \", \" MMSBRIX_PASSWORD\n"
         "Credentials for relays, where no file has them.\n"
         ".TP\n.B XDG_CONFIG_HOME\nWhere the configuration is, ~/.config without it.\n"
         ".SH FILES\n.TP\n.I $XDG_CONFIG_HOME/mmsbrix/profiles\n"
         "Settings of relays; see\n.BR mmsbrix\\-config (1).\n";
}

void writeSubcommandPage(const CLI::App& app, std::ostream& out) {
  const std::string& name = app.get_name();
  writeHead("mmsbrix-" + name, app.get_description(), out);
  const Apps verbs = subcommandsOf(app);
  if (verbs.empty()) writeSynopsis(app, "mmsbrix " + name, out);
  for (const CLI::App* verb : verbs) {
    if (verb != verbs.front()) out << ".br\n";
    writeSynopsis(*verb, "mmsbrix " + name + " " + verb->get_name(), out);
  }
  out << ".SH DESCRIPTION\n" << roff(app.get_description()) << ".\n.SH OPTIONS\n";
  writeOptions(app, out);
  for (const CLI::App* verb : verbs) {
    out << ".SS mmsbrix " << roff(name + " " + verb->get_name()) << '\n'
        << roff(verb->get_description()) << ".\n";
    writeOptions(*verb, out);
  }
  writeFooter(app, out);
  out << ".SH SEE ALSO\n.BR mmsbrix (1)\n";
}

// What a value can be, from the name of its kind: "TEXT:{low,high}", "FILE".
std::string choicesOf(const std::string& kind) {
  if (kind == "STATUS") {
    std::string statuses;
    for (int status = 0x80; status <= 0xFF; ++status) {
      const std::string name = responseStatusName(status);
      if (!name.empty()) statuses += name + " ";
    }
    return statuses;
  }
  const std::size_t begin = kind.find('{');
  if (begin == std::string::npos) return "";
  std::string choices = kind.substr(begin + 1, kind.find('}') - begin - 1);
  std::ranges::replace(choices, ',', ' ');
  return choices;
}

// Shell commands that complete the value of an option; "" for one without a value.
std::string completionOf(const CLI::Option& option) {
  const std::string kind = valueOf(option);
  if (kind.empty()) return "";
  if (option.check_lname("profile")) {
    return "words=$(mmsbrix config 2>/dev/null | sed -n 's/^\\[\\(.*\\)\\]$/\\1/p')";
  }
  if (kind.starts_with("FILE")) return "return";  // as bash does
  if (kind == "DIR") return "mapfile -t COMPREPLY < <(compgen -d -- \"$current\"); return";
  const std::string choices = choicesOf(kind);
  if (choices.empty()) return "compopt +o default; return";
  return "words='" + choices + "'";
}

// Cases for the word before: options of a subcommand and those nested in it.
void writeValueCases(const CLI::App& app, const std::string& subcommand, std::ostream& out) {
  for (const CLI::Option* option : optionsOf(app, false)) {
    const std::string commands = completionOf(*option);
    if (commands.empty()) continue;
    std::string pattern;
    for (const std::string& name : option->get_lnames()) {
      pattern += "|'" + subcommand + " --" + name + "'";
    }
    for (const std::string& name : option->get_snames()) {
      pattern += "|'" + subcommand + " -" + name + "'";
    }
    out << "    " << pattern.substr(1) << ") " << commands << " ;;\n";
  }
  for (const CLI::App* one : subcommandsOf(app)) writeValueCases(*one, subcommand, out);
}

// The words that may follow: nested subcommands and long options.
std::string wordsOf(const CLI::App& app) {
  std::string words;
  for (const CLI::App* one : subcommandsOf(app)) words += one->get_name() + " ";
  for (const CLI::App* one : subcommandsOf(app)) words += wordsOf(*one) + " ";
  for (const CLI::Option* option : optionsOf(app, false)) {
    for (const std::string& name : option->get_lnames()) words += "--" + name + " ";
  }
  if (!words.empty()) words.pop_back();
  return words;
}

void writeCompletion(const CLI::App& app, std::ostream& out) {
  std::string names;
  for (const CLI::App* one : subcommandsOf(app)) names += one->get_name() + " ";
  out << "# bash completion for mmsbrix: subcommands, their options and the values of these; files "
         "for\n"
         "# all else\n"
         "_mmsbrix() {\n"
         "  local current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} words=\n"
         "  COMPREPLY=()\n"
         "  # bash takes --option=value for three words\n"
         "  if [ \"$current\" = = ]; then\n"
         "    current=\n"
         "  elif [ \"$before\" = = ]; then\n"
         "    before=${COMP_WORDS[COMP_CWORD-2]}\n"
         "  fi\n"
         "  case \"${COMP_WORDS[1]} $before\" in\n";
  for (const CLI::App* one : subcommandsOf(app)) writeValueCases(*one, one->get_name(), out);
  out << "    'manual manual') words='" << names << "--bash-completion --folder --help' ;;\n"
      << "    *)\n"
         "      [ \"$COMP_CWORD\" -le 2 ] || [[ $current == -* ]] || return\n"
         "      case ${COMP_WORDS[1]} in\n";
  for (const CLI::App* one : subcommandsOf(app)) {
    out << "        " << one->get_name() << ") words='" << wordsOf(*one) << "' ;;\n";
  }
  out << "      esac\n"
         "      [ \"$COMP_CWORD\" -gt 1 ] || words='"
      << names << "--help --version'\n"
      << "      ;;\n"
         "  esac\n"
         "  mapfile -t COMPREPLY < <(compgen -W \"$words\" -- \"$current\")\n"
         "}\n"
         "complete -o default -F _mmsbrix mmsbrix\n";
}

int writeAll(const CLI::App& app, const std::string& folder, const Streams& streams) {
  std::error_code ignored;
  std::filesystem::create_directories(host::pathOf(folder), ignored);
  const auto write = [&](const std::string& file, const auto& page) {
    std::ostringstream text;
    page(text);
    return writeOutput(folder + "/" + file, text.str(), "manual", streams) == kDone;
  };
  bool written = write("mmsbrix.1", [&](std::ostream& out) { writeProgramPage(app, out); }) &&
                 write("mmsbrix.bash", [&](std::ostream& out) { writeCompletion(app, out); });
  for (const CLI::App* one : subcommandsOf(app)) {
    written = written && write("mmsbrix-" + one->get_name() + ".1",
                               [&](std::ostream& out) { writeSubcommandPage(*one, out); });
  }
  return written ? kDone : kFailed;
}

}  // namespace

CLI::App* addManual(CLI::App& app, ManualCommand& command) {
  CLI::App* manual =
      app.add_subcommand("manual", "Print a manual page, or completion for the shell");
  manual->footer(
      "Examples:\n"
      "  mmsbrix manual send | man -l -\n"
      "  source <(mmsbrix manual --bash-completion)");
  manual->add_option("SUBCOMMAND", command.subcommand, "Whose page; that of mmsbrix without it");
  manual->add_flag("--bash-completion", command.completion, "Print completion for bash instead");
  manual->add_option("--folder", command.folder, "Write all pages and the completion here")
      ->type_name("DIR");
  return manual;
}

int runManual(const CLI::App& app, const ManualCommand& command, const Streams& streams) {
  if (!command.folder.empty()) return writeAll(app, command.folder, streams);
  if (command.completion) {
    writeCompletion(app, streams.out);
    return kDone;
  }
  if (command.subcommand.empty()) {
    writeProgramPage(app, streams.out);
    return kDone;
  }
  for (const CLI::App* one : subcommandsOf(app)) {
    if (one->get_name() != command.subcommand) continue;
    writeSubcommandPage(*one, streams.out);
    return kDone;
  }
  streams.err << "mmsbrix manual: there is no subcommand " << printable(command.subcommand) << '\n';
  return kWrongUsage;
}

}  // namespace mmsbrix::tool
