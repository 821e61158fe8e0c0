#!/usr/bin/env python3
"""usage: gdb_test.py BUILD_DIR

Installs what was built, and shows an agent to gdb, which loads the printers of the installed
library by itself: stopped in its event loop, and as a core file. Both times gdb prints the same
tree, state machine and lines of the trace; and vpm trace prints the core's trace as it prints that
of the files. Then the agent's memory is broken, and what is around the break is still shown.
"""

import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

SKIPPED = 77

DOCUMENT = {
    "vela-l3:policy-source": {
        "policy-set": [
            {
                "device-name": "fw1",
                "policy": [
                    {
                        "vrf-name": "red",
                        "timestamp": "12.5",
                        "rule": [
                            {
                                "priority": 20000,
                                "origin": [
                                    {
                                        "name": "web",
                                        "tags": "in: \"web\"",
                                        "policy-modifier": ["stateless", "symmetric"],
                                        "action": "redirect",
                                        "log": True,
                                        "match": {
                                            "src-ip": ["10.1.0.0/16", "2001:db8::/32"],
                                            "src-ip-range": [
                                                {"first": "::ffff:192.0.2.1", "last": "::1:0:0:2"}
                                            ],
                                            "dst-ip": [f"10.2.{i}.0/24" for i in range(70)],
                                            "l3-app": [6, 17],
                                            "dst-l4-app": [{"port": 443, "protocol": 6}],
                                            "dst-l4-app-range": [
                                                {"first": 8000, "last": 8080, "protocol": 6}
                                            ],
                                        },
                                    }
                                ],
                            },
                            {"priority": 30000, "origin": [{"name": "first", "action": "drop"}]},
                        ],
                    }
                ],
            }
        ]
    },
    "vela-policy-monitor:status": {
        "device-policy-list": [
            {
                "device-name": "fw1",
                "net-vrf-name-by-vrf": [
                    {"vrf-name": "red", "net-vrf-name": "net-red"},
                    {"vrf-name": "blue", "net-vrf-name": ""},
                ],
                "traffic-inspection": "local unified",
            }
        ]
    },
}

TREE = """\
VelaL3::VelaPolicySourceConfig = {
  policySet = 1 entry = {
    ["fw1"] = VelaL3::VelaPolicySetConfig = {
      deviceName = "fw1",
      policy = 1 entry = {
        ["red"] = VelaL3::VelaPolicyConfig = {
          vrfName = "red",
          rule = 2 entries = {
            [30000] = VelaL3::VelaRuleConfig = {
              priority = 30000,
              origin = 1 entry = {
                ["first"] = VelaL3::VelaRuleOriginConfig = {
                  name = "first",
                  tags = "",
                  description = "",
                  policyModifierSet = 0 entries,
                  owner = "",
                  match = null,
                  action = drop,
                  log = false
                }
              }
            },
            [20000] = VelaL3::VelaRuleConfig = {
              priority = 20000,
              origin = 1 entry = {
                ["web"] = VelaL3::VelaRuleOriginConfig = {
                  name = "web",
                  tags = "in: \\"web\\"",
                  description = "",
                  policyModifierSet = 2 entries = {stateless, symmetric},
                  owner = "",
                  match = VelaL3::VelaMatchConfig = {
                    srcIp = 2 entries = {10.1.0.0/16, 2001:db8::/32},
                    srcIpRange = 1 entry = {::ffff:192.0.2.1-::1:0:0:2},
                    dstIp = 70 entries = {DST_IP},
                    dstIpRange = 0 entries,
                    l3App = 2 entries = {6, 17},
                    srcL4App = 0 entries,
                    srcL4AppRange = 0 entries,
                    dstL4App = 1 entry = {443/6},
                    dstL4AppRange = 1 entry = {8000-8080/6}
                  },
                  action = redirect,
                  log = true
                }
              }
            }
          },
          timestamp = 12.500000
        }
      }
    }
  }
}
""".replace("DST_IP", ", ".join(f"10.2.{i}.0/24" for i in range(70)))

MACHINE = """\
VelaPolicyMonitor::PolicyTranslatePerVrfSm = {
  flags = listening,
  vrfName = "red",
  netVrfName = "net-red",
  policyV1 = VelaL3::VelaPolicyConfig["red"],
  policyV2 = VelaL3V2::VelaPolicyConfig["net-red"],
  perRuleSm = 2 entries = {
    [30000] = VelaPolicyMonitor::PolicyTranslatePerRuleSm = {
      flags = listening,
      priority = 30000,
      ruleV1 = VelaL3::VelaRuleConfig[30000],
      ruleV2 = VelaL3V2::VelaRuleConfig[30000],
      cookie = VelaPolicyMonitor::UpdateCookie = {
        updated = false
      },
      perOriginSm = 1 entry = {
        ["first"] = VelaPolicyMonitor::PolicyTranslatePerOriginSm = {
          flags = listening,
          policyName = "first",
          originPolicyV1 = VelaL3::VelaRuleOriginConfig["first"],
          originPolicyV2 = VelaL3V2::VelaRuleOriginConfig["first"],
          cookie = VelaPolicyMonitor::UpdateCookie = {
            updated = false
          },
          matchSm = null,
          initialized = true
        }
      },
      initialized = true
    },
    [20000] = VelaPolicyMonitor::PolicyTranslatePerRuleSm = {
      flags = listening,
      priority = 20000,
      ruleV1 = VelaL3::VelaRuleConfig[20000],
      ruleV2 = VelaL3V2::VelaRuleConfig[20000],
      cookie = VelaPolicyMonitor::UpdateCookie = {
        updated = false
      },
      perOriginSm = 1 entry = {
        ["web"] = VelaPolicyMonitor::PolicyTranslatePerOriginSm = {
          flags = listening,
          policyName = "web",
          originPolicyV1 = VelaL3::VelaRuleOriginConfig["web"],
          originPolicyV2 = VelaL3V2::VelaRuleOriginConfig["web"],
          cookie = VelaPolicyMonitor::UpdateCookie = {
            updated = false
          },
          matchSm = VelaPolicyMonitor::PolicyTranslateMatchSm = {
            flags = listening,
            matchV1 = VelaL3::VelaMatchConfig,
            matchV2 = VelaL3V2::VelaMatchConfig,
            cookie = VelaPolicyMonitor::UpdateCookie = {
              updated = false
            },
            initialized = true
          },
          initialized = true
        }
      },
      initialized = true
    }
  },
  cookie = VelaPolicyMonitor::UpdateCookie = {
    updated = false
  },
  initialized = true,
  initComplete = true
}
"""

STATUS = """\
VelaPolicyMonitor::Status = {
  devicePolicyList = 1 entry = {
    ["fw1"] = VelaPolicyMonitor::DevicePolicyList = {
      deviceName = "fw1",
      policyConverge = true,
      serviceDeviceConverge = false,
      netVrfNameByVrf = 2 entries = {
        ["blue"] = "",
        ["red"] = "net-red"
      },
      trafficInspection = "local unified"
    }
  }
}
"""

# With the times and the numbers of lines in the sources, which are not the point here, left out.
TRACE = "".join(
    f"TIME VelaPolicyMonitor {level} {machine}.cpp:LINE {text.partition('(')[0]}: "
    f"void VelaPolicyMonitor::{machine}::{text}\n"
    for level, machine, text in [
        (7, "PolicyTranslatePerDeviceSm", "handleVrf(const String&)return"),
        (7, "PolicyTranslatePerDeviceSm", "handleVrf()return"),
        (7, "PolicyTranslatePerDeviceSm", "handleInitialized()return"),
        (7, "PolicyTranslateRootSm", "handlePolicySet(const String&)return"),
        (7, "PolicyTranslateRootSm", "handlePolicySet()return"),
        (7, "PolicyTranslateRootSm", "handleInitialized()return"),
        (8, "ServiceDeviceTranslateRootSm", "handleInitialized()"),
        (8, "ServiceDeviceTranslateRootSm", "handleDevice()"),
        (7, "ServiceDeviceTranslateRootSm", "handleDevice()return"),
        (7, "ServiceDeviceTranslateRootSm", "handleInitialized()return"),
    ]
)
DECISION = """\
TIME VelaPolicyMonitor 6 PolicyTranslateRootSm.cpp:LINE handlePolicySet: \
void VelaPolicyMonitor::PolicyTranslateRootSm::handlePolicySet(const String&) add device fw1
"""

SHOWN = {
    'print *$vela("VelaL3::VelaPolicySourceConfig")': TREE,
    'print *$vela("VelaPolicyMonitor::PolicyTranslatePerVrfSm")': MACHINE,
    'print *$vela("VelaPolicyMonitor::Status")': STATUS,
    "vela-trace 10": TRACE,
    "vela-trace 1 --level 6 --class PolicyTranslateRootSm": DECISION,
}

# In the first walk over the rules, when the collection leads to the walk and not to its entries.
WALKED = {
    'print *$vela("VelaL3::VelaPolicySourceConfig")': TREE,
    'print *$vela("VelaPolicyMonitor::PolicyTranslatePerVrfSm")': """\
VelaPolicyMonitor::PolicyTranslatePerVrfSm = {
  flags = silent, busy 6 deep,
  vrfName = "red",
  netVrfName = "net-red",
  policyV1 = VelaL3::VelaPolicyConfig["red"],
  policyV2 = VelaL3V2::VelaPolicyConfig["net-red"],
  perRuleSm = 0 entries,
  cookie = VelaPolicyMonitor::UpdateCookie = {
    updated = false
  },
  initialized = true,
  initComplete = false
}
""",
}


def refused(command):
    """Prints the error of the command."""
    lines = ["python", "try:", f"  gdb.execute('{command}')", "except gdb.error as error:"]
    return "\n".join([*lines, "  print(error)", "end"])


# What is broken or cut short in the running agent: what is done to it, and what gdb shows then.
BROKEN = {
    "set print elements 4\nprint $match->dstIp_": (
        "70 entries = {10.2.0.0/24, 10.2.1.0/24, 10.2.2.0/24, 10.2.3.0/24...}\n"
    ),
    "set print elements 200\nset var *(long*)&$match->dstIp_ = 16\nprint $match->dstIp_": (
        "<Cannot access memory at address 0x10>\n"
    ),
    "set var *(unsigned*)*(long*)&$match->srcIp_ = 3000000000\nprint $match->srcIp_": (
        "<broken: 3000000000 entries in a table for 2 at ADDRESS>\n"
    ),
    "set var ((char*)*(long*)&$match->srcIpRange_)[8 + 16] = 7\nprint $match->srcIpRange_": (
        "1 entry = {<broken: an address of the family 7>}\n"
    ),
    'set var *(long*)&$vela("VelaPolicyMonitor::DevicePolicyList")->deviceName_ = 32\n'
    'print *$vela("VelaPolicyMonitor::DevicePolicyList")': """\
VelaPolicyMonitor::DevicePolicyList = {
  deviceName = <Cannot access memory at address 0x24>,
  policyConverge = true,
  serviceDeviceConverge = false,
  netVrfNameByVrf = 2 entries = {
    ["blue"] = "",
    ["red"] = "net-red"
  },
  trafficInspection = "local unified"
}
""",
    'set var *(long*)$vela("VelaPolicyMonitor::PolicyTranslateMatchSm") = 64\n'
    'print *(Kel::PtrInterface*)$vela("VelaPolicyMonitor::PolicyTranslateMatchSm")': (
        "Kel::PtrInterface = {\n  <unreadable> = <Kel::PtrInterface has no descriptor>\n}\n"
    ),
    refused('print $vela("VelaL3::VrfConfig")'): (
        "There is no object of the type VelaL3::VrfConfig. vela-objects lists the types that have."
        "\n"
    ),
    "set var *(long*)&Lumo::Impl::defaultFile = 0\n" + refused("vela-trace"): (
        "The process writes no binary trace.\n"
    ),
}


def gdb(prefix, arguments, commands, folder):
    """What gdb prints for each of the commands."""
    script = folder / "script.gdb"
    settings = ["print address off", "print pretty on", "width 0", "confirm off", "language c++"]
    settings += ["breakpoint pending on"]
    lines = [f"set {setting}" for setting in settings]
    for number, command in enumerate(commands):
        lines += [f"echo \\n@{number}\\n", command]
    script.write_text("\n".join(lines) + "\necho \\n@end\\n")
    line = ["gdb", "-nx", "-q", "-batch", "-iex", "set debuginfod enabled off"]
    line += ["-iex", f"set auto-load scripts-directory {prefix}/share/gdb/auto-load"]
    line += ["-iex", f"set auto-load safe-path {prefix}/share"]
    done = subprocess.run(
        [*line, *arguments, "-x", script],
        capture_output=True,
        text=True,
        check=False,
        stdin=subprocess.DEVNULL,
        timeout=240,
    )
    parts = re.split(r"\n@(\d+|end)\n", done.stdout)
    if parts[-2:-1] != ["end"]:
        sys.exit(f"gdb gave up: {done.stderr}\nafter: {done.stdout}")
    return parts[2:-1:2]


def output_of(command):
    return subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout


def check(what, shown, expected):
    shown = re.sub(r"^\$\d+ = ", "", shown)
    shown = re.sub(r" at 0x[0-9a-f]{9,}", " at ADDRESS", shown)
    shown = re.sub(r"(?m)^\d+\.\d{6} (.*?\.cpp):\d+ ", r"TIME \1:LINE ", shown)
    if shown != expected:
        sys.exit(f"{what}\nshows:\n{shown}\nand not:\n{expected}")


def main():
    build = pathlib.Path(sys.argv[1])
    if shutil.which("gdb") is None:
        print("skipped: gdb is not installed")
        sys.exit(SKIPPED)
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        prefix = folder / "prefix"
        subprocess.run(
            ["cmake", "--install", build, "--prefix", prefix],
            stdout=subprocess.DEVNULL,
            check=True,
        )
        vpm = prefix / "bin/vpm"
        (folder / "config.json").write_text(json.dumps(DOCUMENT))
        core = folder / "core"
        walk = [
            "tbreak VelaPolicyMonitor::PolicyTranslatePerRuleSm::handleInitialized",
            f"run agent --config {folder}/config.json --listen {folder}/socket "
            f"--trace-file {folder}/trace 2>{folder}/said",
        ]
        start = [
            "tbreak Host::AgentRun::turn",  # the trees are built, and the agent waits for clients
            "continue",
            f"generate-core-file {core}",
            'set $match = $vela("VelaL3::VelaMatchConfig")',
        ]
        live = gdb(prefix, [vpm], [*walk, *WALKED, *start, *SHOWN, *BROKEN], folder)[len(walk) :]
        for (command, expected), text in zip(WALKED.items(), live):
            check(f"in a walk: {command}", text, expected)
        live = live[len(WALKED) + len(start) :]
        of_files = output_of([vpm, "trace", folder / "trace"])
        shutil.rmtree(folder / "trace")  # the core is all that there is
        dead = gdb(prefix, [vpm, core], SHOWN, folder)
        for what, shown in [("the agent", live), ("the core", dead)]:
            for (command, expected), text in zip(SHOWN.items(), shown):
                check(f"{what}: {command}", text, expected)
        if output_of([vpm, "trace", core]) != of_files:
            sys.exit("the core has another trace than the files")
        for (command, expected), text in zip(BROKEN.items(), live[len(SHOWN) :]):
            check(command, text, expected)


main()
