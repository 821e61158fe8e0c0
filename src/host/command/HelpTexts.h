#pragma once

namespace Host {

// What stands below the options in the help of each command.

inline constexpr const char* kVpmHelp = R"(Examples:
  vpm translate firewall.json
      what version 2 becomes of a document
  vpm agent --config firewall.json
      translate each change as it comes; "vpm ctl" talks to the agent

"vpm COMMAND --help" tells more, with examples; "vpm man" prints a manual page.
)";

inline constexpr const char* kManHelp = R"(Examples:
  vpm man | man -l -
      read it without installing it
)";

inline constexpr const char* kCompletionHelp = R"(Examples:
  source <(vpm completion bash)
      in bash, or in ~/.bashrc
  vpm completion zsh > _vpm
      in zsh; the file belongs into a folder of $fpath
  vpm completion fish > vpm.fish
      in fish; the file belongs into ~/.config/fish/completions
)";

inline constexpr const char* kTranslateHelp = R"(Examples:
  vpm translate firewall.json
      print what version 2 becomes of one document
  vpm translate firewall.json pair.json --output v2.json
      merge two documents; v2.json appears whole or not at all
  vpm translate firewall.json --trace - --trace-levels 6 > v2.json
      also show every entry that is added or removed

Exit codes:
  0  done
  2  a document or the command line is wrong; nothing was printed
  3  a file could not be written, or the machine failed
)";

inline constexpr const char* kReplayHelp =
    R"(A line of the log is one burst of changes: a JSON object with any of these
members, which act in this order:
  time     number: what the clock shows from here on, in seconds
  delete   [PATH...]
  replace  [{"path": PATH, "value": ...}...]  writes just what differs
  update   [{"path": PATH, "value": ...}...]  merges the value in
  notify   [PATH...]  announces again what has not changed
  control  "start", "stop", "suspend", "resume", "cleanup" or "initialize";
           with "tree": "policy" or "service-device"; both when absent
  signal   false: do not write the timestamp of touched policies and VRFs
  show     ["v2", "status", "audit", "stats"]: what to answer

Examples:
  vpm replay --config firewall.json changes.log
      what becomes of a document and a log of changes to it
  echo '{"update":[{"path":"/vela-l3:policy-source/policy-set[device-name=fw1]",
         "value":{}}],"show":["v2"]}' | tr -d '\n' | vpm replay
      one line by hand; lines from standard input are answered as they come
  vpm translate pair.json --output old-run.json
  vpm replay --config firewall.json --v2 old-run.json < /dev/null
      what a restart makes of version 2 that an earlier run has left
  vpm replay --config firewall.json changes.log --record applied.log
      applied.log is without the lines that were refused, and with the time of
      each; replayed in the place of changes.log, it comes to the same end

Exit codes:
  0  done
  1  done, but a line raised an error or an audit found a difference
  2  a document, the log or the command line is wrong; nothing was printed
  3  a file could not be written, or the machine failed
)";

inline constexpr const char* kAuditHelp = R"(Examples:
  vpm translate firewall.json --output v2.json
  vpm audit firewall.json v2.json
      does what a run printed still equal its input?

Each difference has a class: "pending" goes by itself, "as designed" stays and
is known to; "foreign" and "defect" are for somebody to look after.

Exit codes:
  0  done; no difference is foreign or a defect
  1  done; one is
  2  a document or the command line is wrong; nothing was printed
  3  a file could not be written, or the machine failed
)";

inline constexpr const char* kTraceHelp =
    R"(A trace is a folder that --trace-file of translate, replay or agent has made.
It can be read while it is written, and when its process has crashed or was
killed. What the process before that one left is in FOLDER.previous. Any reader
of Common Trace Format 1.8, such as babeltrace2, takes the folder too. Where the
folder is lost, a core file of the process will do (not a compressed one).

Examples:
  vpm replay --config firewall.json --trace-file t changes.log > answers.json
  vpm trace t
      every line of that run
  vpm trace t --level 6 --class PolicyTranslatePerVrfSm --from 0 --to 1.5
      what was added to and removed from policies in a second and a half
  vpm trace t --follow --last 20
      what a run does, from the last 20 lines on
  vpm trace t --json | jq -r 'select(.values.VRF_name == "red") | .message'
      lines by their values
  vpm trace t --chrome > t.json
      a timeline; each line takes a nanosecond, as the clock is read once per
      event

Exit codes:
  0  done
  2  there is no trace, or the command line is wrong; nothing was printed
  3  a part of the trace cannot be read; the rest was printed
)";

inline constexpr const char* kExplainHelp =
    R"(Goes along the path from the device down, and says of each step whether it
was found: the tree, the entry of version 1, the monitor's record and the
network VRF name that it has for the VRF, the state machine, the entry of
version 2. The first thing that is missing is the reason; where a change line
helps, it is printed, ready to be sent.

Examples:
  vpm explain "/vela-l3:policy-source/policy-set[device-name=fw1]"
      ask the agent why version 2 has, or has not, the policies of this device
  vpm explain "/vela-l3v2:policy-source/policy-set[device-name=fw1]" \
      --config firewall.json
      where does this come from, if this document is translated?

Exit codes:
  0  explained
  1  the agent refused
  2  a document, the path or the command line is wrong
  3  no agent is there, or it has gone
)";

}  // namespace Host
