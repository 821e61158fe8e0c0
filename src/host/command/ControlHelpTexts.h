#pragma once

namespace Host {

// What stands below the options in the help of "vpm ctl" and of its commands.

inline constexpr const char* kCtlHelp =
    R"(The agent listens where --socket says; else at $VPM_SOCKET; else at
$XDG_RUNTIME_DIR/vpm.sock; else at /run/vpm.sock.

Examples:
  vpm ctl show
      print version 2 as the agent holds it now
  vpm ctl --socket lab.sock audit
      talk to the agent that listens there

Exit codes, unless a command says more:
  0  done
  1  the agent refused
  2  the command line is wrong
  3  no agent is there, or it has gone
)";

inline constexpr const char* kCtlShowHelp = R"(Examples:
  vpm ctl show
      version 2 as a tree
  vpm ctl show "/vela-l3v2:policy-source/policy-set[device-name=fw1]"
      what one device has
  vpm ctl show --v1 --status --json > state.json
      version 1 and the monitor's records, fit for vpm translate
)";

inline constexpr const char* kCtlApplyHelp =
    R"(Change lines are those of vpm replay, without "time": see vpm replay --help.
Answers to "show" are printed, one JSON object each.

With --dry-run each line is tried on what the agent holds now, not on what the
lines before it would make of that: + is added, - removed, ~ set.

Examples:
  vpm ctl apply --dry-run changes.log
      look at what would change in version 2
  vpm ctl apply changes.log
      change it
  echo '{"delete":["/vela-l3:policy-source/policy-set[device-name=fw1]"]}' |
    vpm ctl apply
      one line by hand

Exit codes:
  0  all lines were applied
  1  a line failed; all others were applied
  2  the command line is wrong; nothing was sent
  3  no agent is there, or it has gone; it is said which lines are in doubt
)";

inline constexpr const char* kCtlWatchHelp =
    R"(First comes what there is, then each change as it is made: + is added, -
removed with all that was below it, ~ set. It ends when it is interrupted
(Ctrl-C).

Examples:
  timeout --preserve-status -s INT 1 vpm ctl watch
      what there is, and what changes within a second
  timeout --preserve-status -s INT 1 vpm ctl watch --json \
    "/vela-l3v2:policy-source/policy-set[device-name=fw1]" > changes.json
      the same of one device, for programs

Exit codes:
  0  interrupted
  2  the command line is wrong
  3  no agent is there, or it has gone
)";

inline constexpr const char* kCtlAuditHelp =
    R"(Each difference has a class: "pending" goes by itself, "as designed" stays and
is known to; "foreign" and "defect" are for somebody to look after.

Examples:
  vpm ctl audit
      a table of the differences
  vpm ctl audit --json
      the same for programs

Exit codes:
  0  done; no difference is foreign or a defect
  1  one is
  3  no agent is there, or it has gone
)";

inline constexpr const char* kCtlTraceHelp =
    R"(What is not said stays as it is; --device "" lifts the limit to one device.

Examples:
  vpm ctl trace
      what is traced now
  vpm ctl trace --levels 6 --device fw1
      decisions about one device
  vpm ctl trace --levels 0-9 --all
      everything
)";

inline constexpr const char* kCtlStatsHelp = R"(Examples:
  vpm ctl stats
      lines, clients, memory; objects, changes and handlers by type
  vpm ctl stats --prometheus > vpm.prom
      for the text-file collector of Prometheus
)";

inline constexpr const char* kCtlWaitHelp = R"(Examples:
  vpm ctl wait --converged
      until every device has converged
  vpm ctl wait --converged fw1 --timeout 5
      until one has, for at most 5 seconds

Exit codes:
  0  converged
  1  the time is up; it is said which devices have not converged, and why
  2  the command line is wrong
  3  no agent is there, or it has gone
)";

inline constexpr const char* kCtlReloadHelp = R"(Examples:
  vpm ctl reload
      after a document was edited, if the agent does not watch them itself

Exit codes:
  0  done
  1  a document is wrong; nothing was changed
  3  no agent is there, or it has gone
)";

inline constexpr const char* kCtlStopHelp = R"(Examples:
  vpm ctl stop
      the agent takes leave of its clients and ends
)";

inline constexpr const char* kCtlExplainHelp = R"(Examples:
  vpm ctl explain "/vela-l3:policy-source/policy-set[device-name=fw1]"
      does version 2 have this device, and if not, what is missing?

It is the same as "vpm explain" without --config; see there.
)";

}  // namespace Host
