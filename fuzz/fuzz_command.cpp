// A message on the port of commands, as anybody can send it. It becomes one task, or is dropped, or
// ends in an exception that the network drops it for; and it is taken only once. Afterwards a good
// command is executed as ever.
//
// The input is the message.

#include <exception>
#include <memory>
#include <string>

#include "fuzz/Expect.h"
#include "fuzz/Target.h"
#include "zelv/adapter/OneHost.h"
#include "zelv/controller/CommandController.h"
#include "zelv/controller/ExecuteCommandTask.h"
#include "zelv/controller/ProcessCommandReturnTask.h"
#include "zelv/infrastructure/HierarchicalDB.h"
#include "zelv/infrastructure/URL.h"
#include "zelv/platform/PCRealDebug.h"

using Zelv::CommandArgs;
using Zelv::GUID;
using Zelv::Controller::CommandController;
using Zelv::Controller::CommandControllerTask;
using Zelv::Controller::ExecuteCommandTask;
using Zelv::Controller::ProcessCommandReturnTask;
using Zelv::Fuzz::expect;
using Zelv::Fuzz::expectEqual;
using Zelv::Infrastructure::HierarchicalDB;
using Zelv::Infrastructure::URL;

namespace {

class Handler : public virtual Zelv::IBaseCommandHandler {
 public:
  std::string onCommand(std::string const& aCommand, CommandArgs const& aArgs) override {
    heard =
        aCommand + "|" + aArgs.messageId.toString() + "|" + aArgs.senderId + "|" + aArgs.replyTo;
    return "value";
  }

  std::string heard;
};

std::string read(HierarchicalDB& aDocument, std::string const& aElement) {
  std::string text;
  aDocument.getContent("/Envelope/Header/" + aElement + "/text()", text);
  return text;
}

bool isAddress(std::string const& aText) {
  try {
    return Zelv::Adapter::isOneHost(URL(aText));
  } catch (std::exception const&) {
    return false;
  }
}

std::string bodyOf(std::string const& aMessage) {
  auto const open = aMessage.find("<Body>");
  auto const close =
      open == std::string::npos ? std::string::npos : aMessage.find("</Body>", open + 6);
  return close == std::string::npos ? aMessage : aMessage.substr(open + 6, close - open - 6);
}

/// What becomes of a message, read step by step: the kind of task and its text.
std::string expected(std::string const& aMessage) {
  HierarchicalDB document;
  if (document.loadFromString(aMessage) != 0) {
    return "dropped";
  }
  std::string const replyTo = read(document, "ReplyTo");
  if (read(document, "MessageID").empty() || (!replyTo.empty() && !isAddress(replyTo))) {
    return "dropped";
  }
  std::string const body = bodyOf(aMessage);
  if (body.empty()) {
    return "dropped";
  }
  std::string const relatesTo = read(document, "RelatesTo");
  try {
    GUID const id(read(document, "MessageID"));
    if (relatesTo.empty()) {
      return "command " + body;
    }
    GUID const related(relatesTo);
    return "return " + body;
  } catch (std::exception const&) {
    return "dropped";
  }
}

std::unique_ptr<CommandControllerTask> deliver(CommandController& aController,
                                               std::string const& aMessage) {
  try {
    aController.onMessage(aMessage, aMessage);
  } catch (std::exception const&) {
    // as the network does
  }
  return aController.dequeueTask();
}

std::string outcome(CommandControllerTask const* aTask) {
  if (aTask == nullptr) {
    return "dropped";
  }
  bool const isReturn = dynamic_cast<ProcessCommandReturnTask const*>(aTask) != nullptr;
  expect("a command or a return",
         isReturn || dynamic_cast<ExecuteCommandTask const*>(aTask) != nullptr);
  return (isReturn ? "return " : "command ") + aTask->getText();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* aData, std::size_t aSize) {
  PCRealDebug::Silence();
  CommandController controller(
      CommandController::Surroundings{[]() -> Zelv::ICoreData* { return nullptr; },
                                      []() -> Zelv::ICoreTimer* { return nullptr; }, nullptr});
  Handler handler;
  controller.registerCommandHandler("A", &handler);
  std::string const message(reinterpret_cast<char const*>(aData), aSize);
  std::unique_ptr<CommandControllerTask> const task = deliver(controller, message);
  expectEqual("a message", outcome(task.get()), expected(message));
  if (task) {
    task->execute();
  }
  expect("one task at most", controller.dequeueTask() == nullptr);
  std::string const id = "6ba7b810-9dad-11d1-80b4-00c04fd430c8";
  if (message.find(id) != std::string::npos) {
    return 0;  // taken for a copy of it
  }
  std::unique_ptr<CommandControllerTask> const good = deliver(
      controller, "<Envelope><Header><MessageID>" + id +
                      "</MessageID><SenderID>s</SenderID><ReplyTo>tcp://192.0.2.7:1/</ReplyTo>"
                      "</Header><Body><A>1 &lt; 2</A></Body></Envelope>\n");
  expectEqual("a good one afterwards", outcome(good.get()), "command <A>1 &lt; 2</A>");
  good->execute();
  expectEqual("as the handler hears it", handler.heard,
              "<A>1 &lt; 2</A>|" + id + "|s|tcp://192.0.2.7:1/");
  return 0;
}
