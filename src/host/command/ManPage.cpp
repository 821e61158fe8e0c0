#include "command/ManPage.h"

#include "command/CommandText.h"
#include "text/Concat.h"
#include "text/LineReader.h"

namespace Host {
namespace {

constexpr std::string_view kEnd = R"(.SH EXIT STATUS
.TP
.B 0
done
.TP
.B 1
done, but an audit found a difference or a change line raised an error
.TP
.B 2
the input or the command line is wrong; nothing was printed or applied
.TP
.B 3
a file, the socket or the agent failed
.SH ENVIRONMENT
.TP
.B VPM_SOCKET
where the agent listens, unless
.B \-\-listen
or
.B \-\-socket
says so
.TP
.B XDG_RUNTIME_DIR
the folder of the socket
.IR vpm.sock ,
unless one of these says where it is
.TP
.B VELA_TRACE
the levels of the text trace, on standard error, of every program that has the
library in it:
.IR VelaPolicyMonitor/6\-8 .
.B \-\-trace\-levels
goes before it
.TP
.B NO_COLOR
if it is set, there are no colours, unless
.B \-\-color always
asks for them
.SH FILES
.TP
.I /run/vpm.sock
where the agent listens when nothing says so
)";

/// Text that roff prints as it is. `minus`: a hyphen is one that is typed.
std::string escaped(std::string_view text, bool minus = true) {
  std::string roff;
  if (text.starts_with('.') || text.starts_with('\'')) {
    roff += "\\&";
  }
  for (const char c : text) {
    switch (c) {
      case '\\':
        roff += "\\e";
        break;
      case '-':
        roff += minus ? "\\-" : "-";
        break;
      case '\'':
        roff += "\\(aq";
        break;
      case '^':
        roff += "\\(ha";
        break;
      case '~':
        roff += "\\(ti";
        break;
      case '`':
        roff += "\\(ga";
        break;
      default:
        roff += c;
    }
  }
  return roff;
}

/// The help below the options. Lines at the margin are running text; indented ones stay as they
/// are.
void appendHelp(std::string& out, const std::string& help) {
  bool verbatim = false;
  const auto verbatimIs = [&](bool wanted) {
    if (wanted != verbatim) {
      out += wanted ? ".nf\n" : ".fi\n";
    }
    verbatim = wanted;
  };
  Lines lines(help);
  while (const auto line = lines.next()) {
    if (isBlank(*line)) {
      verbatimIs(false);
      out += ".PP\n";
    } else if (line->starts_with(' ')) {
      verbatimIs(true);
      out += concat({escaped(line->substr(1)), "\n"});
    } else {
      verbatimIs(false);
      out += concat({escaped(*line, false), "\n"});
    }
  }
  verbatimIs(false);
}

void appendOption(std::string& out, const OptionText& option) {
  out += ".TP\n";
  std::string names;
  for (const std::string& name : option.names) {
    names += concat({names.empty() ? "\\fB" : ", \\fB", escaped(name), "\\fR"});
  }
  out += names;
  const bool argument = !option.names.front().starts_with('-');
  if (!option.value.empty() && !argument) {
    out += concat({" \\fI", escaped(option.value), "\\fR"});
  }
  out += concat({"\n", escaped(option.about, false), "\n"});
}

void appendCommand(std::string& out, const CommandText& command) {
  out += concat(
      {".SS \"", escaped(command.usage()), "\"\n", escaped(sentenceOf(command.about)), "\n"});
  for (const OptionText& argument : command.arguments) {
    appendOption(out, argument);
  }
  for (const OptionText& option : command.options) {
    appendOption(out, option);
  }
  if (!command.help.empty()) {
    out += ".PP\n";
    appendHelp(out, command.help);
  }
}

}  // namespace

std::string manPage(const CommandText& program, const std::string& version) {
  std::string out = concat({".TH VPM 1 \"\" \"vpm ", version, "\" \"User Commands\"\n",
                            ".SH NAME\nvpm \\- ", escaped(program.about), "\n"});
  out += concat({".SH SYNOPSIS\n.B vpm\n.I COMMAND\n.RI [ OPTIONS ]\n", ".SH DESCRIPTION\n.B vpm\n",
                 escaped(program.about), ".\n.PP\n"});
  appendHelp(out, program.help);
  out += ".SH OPTIONS\n";
  for (const OptionText& option : program.options) {
    appendOption(out, option);
  }
  out += ".SH COMMANDS\n";
  for (const CommandText& command : program.commands) {
    forEachCommand(command, [&](const CommandText& each) { appendCommand(out, each); });
  }
  return concat({out, kEnd});
}

}  // namespace Host
