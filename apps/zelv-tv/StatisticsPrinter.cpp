#include "apps/zelv-tv/StatisticsPrinter.h"

#include <array>
#include <cstdio>
#include <map>

#include "apps/zelv-tv/ValueText.h"

namespace ZelvTv {

namespace {

using Zelv::Diagnostics;
using Lines = StatisticsPrinter::Lines;

char const* wordOf(Diagnostics::Rule aRule) {
  using Rule = Diagnostics::Rule;
  switch (aRule) {
    case Rule::NoChange:
      return "no-change";
    case Rule::RemoteData:
      return "remote-data";
    case Rule::OneTime:
      return "one-time";
    case Rule::Excluded:
      return "excluded";
    case Rule::SamePath:
      return "same-path";
    case Rule::Sibling:
      return "sibling";
    case Rule::Attribute:
      return "attribute";
    case Rule::Unmatched:
      return "unmatched";
    case Rule::Nested:
      return "nested";
  }
  return "unknown";
}

/// Fields of one line.
class Line {
 public:
  explicit Line(char const* aWord) : mText(aWord) {}

  Line& Field(std::string const& aText) { return append(ValueText::ToField(aText)); }
  Line& Number(std::uint64_t aNumber) { return append(std::to_string(aNumber)); }
  Line& Last(std::string const& aText) { return append(ValueText::ToLine(aText)); }

  /// In a unit that is a thousandth of which is given, with three digits behind the point.
  Line& Thousandths(std::int64_t aNumber) {
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), "%.3f", static_cast<double>(aNumber) / 1000.0);
    return append(text.data());
  }

  std::string const& Text() const { return mText; }

 private:
  Line& append(std::string const& aText) {
    mText += ' ' + aText;
    return *this;
  }

  std::string mText;
};

void addQueues(Diagnostics::Statistics const& aStatistics, Lines& aLines) {
  aLines.push_back(Line("queue").Field("data").Number(aStatistics.dataTasks).Text());
  aLines.push_back(Line("queue").Field("command").Number(aStatistics.commandTasks).Text());
  aLines.push_back(Line("queue").Field("input").Number(aStatistics.inputs).Text());
  for (Diagnostics::DeviceQueue const& queue : aStatistics.deviceQueues) {
    aLines.push_back(Line("device-queue")
                         .Field(queue.service)
                         .Field(queue.device)
                         .Number(queue.texts)
                         .Number(queue.bytes)
                         .Number(queue.sent)
                         .Number(queue.dropped)
                         .Last(queue.url)
                         .Text());
  }
  aLines.push_back(Line("remote")
                       .Number(aStatistics.remoteContexts)
                       .Number(aStatistics.remoteSubscriptions)
                       .Text());
  aLines.push_back(Line("commands")
                       .Number(aStatistics.pendingCommands)
                       .Number(aStatistics.commandCallbacks)
                       .Text());
}

std::string longest(char const* aKind, Diagnostics::Call const& aCall) {
  return Line("longest")
      .Field(aKind)
      .Thousandths(aCall.nanoseconds / 1000)
      .Field(aCall.operation)
      .Field(aCall.callee)
      .Last(aCall.subject)
      .Text();
}

void addRequests(Diagnostics::Statistics const& aStatistics, Lines& aLines) {
  for (Diagnostics::Request const& request : aStatistics.oldestRequests) {
    aLines.push_back(Line("request")
                         .Field(request.id.toString())
                         .Thousandths(request.age)
                         .Field(request.answered ? "answered" : "waiting")
                         .Last(request.path)
                         .Text());
  }
  aLines.push_back(Line("requests").Number(aStatistics.requests).Text());
}

void addThreads(Diagnostics::Statistics const& aStatistics, Lines& aLines) {
  std::map<std::string, std::size_t> threads;
  for (std::string const& name : aStatistics.threads) {
    ++threads[name];
  }
  for (auto const& [name, count] : threads) {
    aLines.push_back(Line("thread").Number(count).Last(name).Text());
  }
  aLines.push_back(
      Line("threads").Number(aStatistics.threads.size()).Number(aStatistics.parkedThreads).Text());
}

void addPeers(Diagnostics::Statistics const& aStatistics, Lines& aLines) {
  for (Diagnostics::Peer const& peer : aStatistics.peers) {
    aLines.push_back(Line("peer")
                         .Field(peer.type)
                         .Field(peer.id)
                         .Number(static_cast<std::uint64_t>(peer.age))
                         .Last(peer.name)
                         .Text());
  }
  aLines.push_back(Line("peers").Number(aStatistics.peers.size()).Text());
  for (Diagnostics::DepartedPeer const& peer : aStatistics.departedPeers) {
    aLines.push_back(Line("departed")
                         .Field(peer.type)
                         .Field(peer.id)
                         .Number(static_cast<std::uint64_t>(peer.age))
                         .Field(peer.saidGoodbye ? "bye" : "silence")
                         .Last(peer.name)
                         .Text());
  }
}

}  // namespace

Lines StatisticsPrinter::Explain(std::vector<Diagnostics::Explanation> const& aExplanations,
                                 std::string const& aPath) {
  Lines lines;
  for (Diagnostics::Explanation const& one : aExplanations) {
    std::string reason = Diagnostics::reasonOf(one.rule);
    if (one.withheld) {
      reason += "; another device's, so it hears of no change that stays on this one";
    }
    lines.push_back(Line("explain")
                        .Field(one.id.toString())
                        .Field(wordOf(one.rule))
                        .Field(one.subscriber)
                        .Field(one.path)
                        .Last(reason)
                        .Text());
  }
  lines.push_back(Line("explained").Number(aExplanations.size()).Last(aPath).Text());
  return lines;
}

Lines StatisticsPrinter::Statistics(std::optional<Diagnostics::Statistics> const& aStatistics) {
  if (!aStatistics) {
    return {"error the set does not run"};
  }
  Lines lines;
  addQueues(*aStatistics, lines);
  lines.push_back(longest("provider", aStatistics->longestProviderCall));
  lines.push_back(longest("callback", aStatistics->longestCallback));
  addRequests(*aStatistics, lines);
  addThreads(*aStatistics, lines);
  addPeers(*aStatistics, lines);
  lines.push_back(Line("stats").Number(lines.size()).Text());
  return lines;
}

}  // namespace ZelvTv
