// tests/property/run.cpp - one call of an entry point as data.
// SPDX-License-Identifier: MIT

#include "property/run.h"

#include "plain/entry.h"

#include <ctime>
#include <sstream>

// Takes the place of the C library's clock in this program.
extern "C" std::time_t time(std::time_t *where)
{
  const std::time_t now = 1000000007;

  if (where != nullptr)
    *where = now;
  return now;
}

Result RunCall(const Call &call)
{
  static const EntryPoint entries[NENTRIES] = {RECURSIVE, INTERNAL, KWAY, REFINE2, REFINEK};
  const Instance &instance = call.instance;
  const std::vector<int> netptr = instance.NetPtr(), netind = instance.NetInd();
  const int n = instance.ncells, nnets = static_cast<int>(instance.nets.size());
  const std::vector<int> cellwgt = Narrow(instance.cellwgt), netwgt = Narrow(instance.netwgt);
  const int *cellwgts = cellwgt.empty() ? nullptr : cellwgt.data();
  const int *netwgts = netwgt.empty() ? nullptr : netwgt.data();
  Result result = {call.part, -1};

  result.part.resize(static_cast<std::size_t>(n), -1);
  entries[call.entry](n, nnets, cellwgts, netptr.data(), netind.data(), netwgts, call.nparts, call.UBfactor,
                      call.options.data(), result.part.data(), &result.cut);
  return result;
}

namespace
{

struct Capture {
  TraceSink before;

  explicit Capture(std::string *printed) : before(UseTraceSink({Append, printed}))
  {
  }

  ~Capture()
  {
    UseTraceSink(before);
  }

  static void Append(void *owner, const char *text)
  {
    static_cast<std::string *>(owner)->append(text);
  }

  Capture(const Capture &) = delete;
  Capture &operator=(const Capture &) = delete;
};

} // namespace

Result RunTraced(const Call &call, std::string *printed)
{
  const Capture capture(printed);

  return RunCall(call);
}

std::string Literal(const Call &call)
{
  const auto list = [](const std::vector<int> &x) {
    std::string text;
    for (int value : x)
      text += (text.empty() ? "" : ", ") + std::to_string(value);
    return "{" + text + "}";
  };
  std::ostringstream out;

  out << "{Entry(" << call.entry << "), " << call.instance.Literal() << ", " << call.nparts << ", "
      << call.UBfactor << ", " << list(call.options) << ", " << list(call.part) << "}";
  return out.str();
}

std::vector<int> RandomParts(TestRandom *random, int ncells, int nparts, int freepercent)
{
  std::vector<int> parts;

  for (int i = 0; i < ncells; i++)
    parts.push_back(random->Chance(freepercent) ? -1 : random->Below(nparts));
  return parts;
}
