#include "control/AskedPath.h"

#include "change/PathReader.h"

namespace Host {

bool readAskedPath(const std::string& text, TreePath& path, Report& report) {
  PathReader reader(Content::everything);
  if (reader.read(text, path)) {
    return true;
  }
  report.faults(SourceText("PATH", text),
                {{reader.offset(), reader.length(), reader.why(), std::string()}});
  return false;
}

}  // namespace Host
