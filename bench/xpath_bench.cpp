// getContent of the four common forms beside a hand-written walk of the same TinyXML tree and
// beside libraries that evaluate XPath. Every contender gives all matches as text; "first" rows
// stop at the first and are there for information.

#include <benchmark/benchmark.h>
#include <tinyxml.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <pugixml.hpp>
#include <string>

#include "bench/Documents.h"
#include "zelv/infrastructure/HierarchicalDB.h"

#ifdef BENCH_LIBXML2
#include <libxml/parser.h>
#include <libxml/xpath.h>
#endif
#ifdef BENCH_LIBYANG
#include <libyang/libyang.h>
#endif
#ifdef BENCH_AUGEAS
#include <augeas.h>
#endif

namespace {

using Zelv::Bench::Documents;

enum Form { ByChildText = 1, ByAttribute = 2, Sweep = 3, AnywhereById = 4 };

char const* const separator = "&#x13;";

std::string middleId(Documents const& aDocument) {
  return Documents::deviceId(aDocument.devices() / 2);
}

std::string middleService(Documents const& aDocument) {
  return Documents::serviceName(aDocument.services() / 2);
}

std::string path(Form aForm, Documents const& aDocument) {
  switch (aForm) {
    case ByChildText:
      return "/Devices/Services/Service[Name='" + middleService(aDocument) + "']/Port/text()";
    case ByAttribute:
      return "/Devices/Mobile[@ID='" + middleId(aDocument) + "']/Name/text()";
    case Sweep:
      return "/Devices/*[LastHeartBeat<2000]/@ID";
    case AnywhereById:
      return "//*[@ID='" + middleId(aDocument) + "']/Name/text()";
  }
  std::abort();
}

std::string expected(Form aForm, Documents const& aDocument) {
  int const middle = aDocument.devices() / 2;
  if (aForm == ByChildText) {
    return Documents::devicePort(middle);
  }
  if (aForm != Sweep) {
    return Documents::deviceName(middle);
  }
  std::string all;
  for (int index = 0; index < aDocument.devices(); ++index) {
    if (Documents::heartBeat(index) < 2000) {
      all += (all.empty() ? "" : separator) + Documents::deviceId(index);
    }
  }
  return all;
}

void check(benchmark::State& aState, std::string const& aResult, std::string const& aExpected) {
  if (aResult != aExpected) {
    aState.SkipWithError(("wrong answer: " + aResult.substr(0, 80)).c_str());
  }
}

void add(std::string& aResult, char const* aValue) {
  if (!aResult.empty()) {
    aResult += separator;
  }
  aResult += aValue;
}

// The hand-written walks: what an engineer writes who knows the document.

void walkByChildText(TiXmlElement* aRoot, char const* aName, std::string& aResult, bool aFirst) {
  for (TiXmlElement* list = aRoot->FirstChildElement("Services"); list;
       list = list->NextSiblingElement("Services")) {
    for (TiXmlElement* service = list->FirstChildElement("Service"); service;
         service = service->NextSiblingElement("Service")) {
      TiXmlElement* name = service->FirstChildElement("Name");
      if (name && name->GetText() && std::strcmp(name->GetText(), aName) == 0) {
        add(aResult, service->FirstChildElement("Port")->GetText());
        if (aFirst) {
          return;
        }
      }
    }
  }
}

void walkByAttribute(TiXmlElement* aRoot, char const* aId, std::string& aResult, bool aFirst) {
  for (TiXmlElement* mobile = aRoot->FirstChildElement("Mobile"); mobile;
       mobile = mobile->NextSiblingElement("Mobile")) {
    char const* id = mobile->Attribute("ID");
    if (id && std::strcmp(id, aId) == 0) {
      add(aResult, mobile->FirstChildElement("Name")->GetText());
      if (aFirst) {
        return;
      }
    }
  }
}

void walkSweep(TiXmlElement* aRoot, std::string& aResult) {
  for (TiXmlElement* device = aRoot->FirstChildElement(); device;
       device = device->NextSiblingElement()) {
    TiXmlElement* beat = device->FirstChildElement("LastHeartBeat");
    if (beat && beat->GetText() && std::strtod(beat->GetText(), nullptr) < 2000) {
      add(aResult, device->Attribute("ID"));
    }
  }
}

bool walkAnywhere(TiXmlElement* aElement, char const* aId, std::string& aResult, bool aFirst) {
  char const* id = aElement->Attribute("ID");
  if (id && std::strcmp(id, aId) == 0) {
    add(aResult, aElement->FirstChildElement("Name")->GetText());
    if (aFirst) {
      return true;
    }
  }
  for (TiXmlElement* child = aElement->FirstChildElement(); child;
       child = child->NextSiblingElement()) {
    if (walkAnywhere(child, aId, aResult, aFirst)) {
      return true;
    }
  }
  return false;
}

void walk(Form aForm, TiXmlElement* aRoot, std::string const& aKey, std::string& aResult,
          bool aFirst) {
  switch (aForm) {
    case ByChildText:
      return walkByChildText(aRoot, aKey.c_str(), aResult, aFirst);
    case ByAttribute:
      return walkByAttribute(aRoot, aKey.c_str(), aResult, aFirst);
    case Sweep:
      return walkSweep(aRoot, aResult);
    case AnywhereById:
      walkAnywhere(aRoot, aKey.c_str(), aResult, aFirst);
  }
}

std::string key(Form aForm, Documents const& aDocument) {
  return aForm == ByChildText ? middleService(aDocument) : middleId(aDocument);
}

void handWalk(benchmark::State& aState, bool aFirst) {
  Form const form = static_cast<Form>(aState.range(1));
  Documents const document(static_cast<std::size_t>(aState.range(0)) * 1024);
  TiXmlDocument tree;
  tree.Parse(document.text().c_str());
  std::string const wanted = key(form, document);
  std::string result;
  for (auto _ : aState) {
    result.clear();
    walk(form, tree.RootElement(), wanted, result, aFirst);
    benchmark::DoNotOptimize(result.data());
  }
  check(aState, result, expected(form, document));
}

void tinyXmlWalk(benchmark::State& aState) {
  handWalk(aState, false);
}
void tinyXmlWalkFirst(benchmark::State& aState) {
  handWalk(aState, true);
}

void getContent(benchmark::State& aState) {
  Form const form = static_cast<Form>(aState.range(1));
  Documents const document(static_cast<std::size_t>(aState.range(0)) * 1024);
  Zelv::Infrastructure::HierarchicalDB database;
  database.loadFromString(document.text());
  std::string const asked = path(form, document);
  std::string result;
  for (auto _ : aState) {
    database.getContent(asked, result);
    benchmark::DoNotOptimize(result.data());
  }
  check(aState, result, expected(form, document));
}

void pugiXml(benchmark::State& aState) {
  Form const form = static_cast<Form>(aState.range(1));
  Documents const document(static_cast<std::size_t>(aState.range(0)) * 1024);
  pugi::xml_document tree;
  tree.load_string(document.text().c_str());
  std::string const asked = path(form, document);
  std::string result;
  for (auto _ : aState) {
    result.clear();
    for (pugi::xpath_node const& hit : tree.select_nodes(asked.c_str())) {
      add(result, hit.attribute() ? hit.attribute().value() : hit.node().value());
    }
    benchmark::DoNotOptimize(result.data());
  }
  check(aState, result, expected(form, document));
}

#ifdef BENCH_LIBXML2
void libXml2(benchmark::State& aState) {
  Form const form = static_cast<Form>(aState.range(1));
  Documents const document(static_cast<std::size_t>(aState.range(0)) * 1024);
  xmlDocPtr tree =
      xmlReadMemory(document.text().data(), int(document.text().size()), nullptr, nullptr, 0);
  xmlXPathContextPtr context = xmlXPathNewContext(tree);
  std::string const asked = path(form, document);
  std::string result;
  for (auto _ : aState) {
    result.clear();
    xmlXPathObjectPtr hits = xmlXPathEval(BAD_CAST asked.c_str(), context);
    for (int index = 0; index < hits->nodesetval->nodeNr; ++index) {
      xmlNodePtr node = hits->nodesetval->nodeTab[index];
      xmlNodePtr value = node->type == XML_ATTRIBUTE_NODE ? node->children : node;
      add(result, reinterpret_cast<char const*>(value->content));
    }
    xmlXPathFreeObject(hits);
    benchmark::DoNotOptimize(result.data());
  }
  check(aState, result, expected(form, document));
  xmlXPathFreeContext(context);
  xmlFreeDoc(tree);
}
#endif

#ifdef BENCH_LIBYANG
// YANG has no attributes: ID is a leaf there, and the key of its list.
char const* const schema = R"(module bench { namespace "urn:bench"; prefix b;
  container Devices {
    container Services { list Service { key Name; leaf Name { type string; }
                                        leaf Port { type string; } } }
    list Mobile { key ID; leaf ID { type string; } leaf Name { type string; }
                  leaf Model { type string; } leaf LastHeartBeat { type int32; } } } })";

std::string yangText(Documents const& aDocument) {
  std::string text = "<Devices xmlns=\"urn:bench\"><Services>";
  for (int index = 0; index < aDocument.services(); ++index) {
    text += "<Service><Name>" + Documents::serviceName(index) + "</Name><Port>" +
            Documents::devicePort(index) + "</Port></Service>";
  }
  text += "</Services>";
  for (int index = 0; index < aDocument.devices(); ++index) {
    text += "<Mobile><ID>" + Documents::deviceId(index) + "</ID><Name>" +
            Documents::deviceName(index) + "</Name><Model>M</Model><LastHeartBeat>" +
            std::to_string(Documents::heartBeat(index)) + "</LastHeartBeat></Mobile>";
  }
  return text + "</Devices>";
}

std::string yangPath(Form aForm, Documents const& aDocument) {
  switch (aForm) {
    case ByChildText:
      return "/bench:Devices/Services/Service[Name='" + middleService(aDocument) + "']/Port";
    case ByAttribute:
      return "/bench:Devices/Mobile[ID='" + middleId(aDocument) + "']/Name";
    case Sweep:
      return "/bench:Devices/*[bench:LastHeartBeat<2000]/ID";
    case AnywhereById:
      return "//*[bench:ID='" + middleId(aDocument) + "']/Name";
  }
  std::abort();
}

void libYang(benchmark::State& aState) {
  Form const form = static_cast<Form>(aState.range(1));
  Documents const document(static_cast<std::size_t>(aState.range(0)) * 1024);
  ly_ctx* context = nullptr;
  ly_ctx_new(nullptr, 0, &context);
  lys_parse_mem(context, schema, LYS_IN_YANG, nullptr);
  lyd_node* tree = nullptr;
  lyd_parse_data_mem(context, yangText(document).c_str(), LYD_XML, LYD_PARSE_ONLY, 0, &tree);
  std::string const asked = yangPath(form, document);
  std::string result;
  for (auto _ : aState) {
    result.clear();
    ly_set* hits = nullptr;
    if (lyd_find_xpath(tree, asked.c_str(), &hits) == LY_SUCCESS) {
      for (unsigned index = 0; index < hits->count; ++index) {
        add(result, lyd_get_value(hits->dnodes[index]));
      }
    }
    ly_set_free(hits, nullptr);
    benchmark::DoNotOptimize(result.data());
  }
  check(aState, result, expected(form, document));
  lyd_free_all(tree);
  ly_ctx_destroy(context);
}
#endif

#ifdef BENCH_AUGEAS
void fillAugeas(augeas* aTree, Documents const& aDocument) {
  for (int index = 0; index < aDocument.devices(); ++index) {
    std::string const at = std::to_string(index + 1) + "]";
    aug_set(aTree, ("/Devices/Services/Service[" + at + "/Name").c_str(),
            Documents::serviceName(index).c_str());
    aug_set(aTree, ("/Devices/Services/Service[" + at + "/Port").c_str(),
            Documents::devicePort(index).c_str());
    std::string const mobile = "/Devices/Mobile[" + at;
    aug_set(aTree, (mobile + "/ID").c_str(), Documents::deviceId(index).c_str());
    aug_set(aTree, (mobile + "/Name").c_str(), Documents::deviceName(index).c_str());
    aug_set(aTree, (mobile + "/LastHeartBeat").c_str(),
            std::to_string(Documents::heartBeat(index)).c_str());
  }
}

std::string augeasPath(Form aForm, Documents const& aDocument) {
  switch (aForm) {
    case ByChildText:
      return "/Devices/Services/Service[Name='" + middleService(aDocument) + "']/Port";
    case ByAttribute:
      return "/Devices/Mobile[ID='" + middleId(aDocument) + "']/Name";
    case Sweep:
      // Augeas compares texts with texts alone; the silent devices all have this one.
      return "/Devices/*[LastHeartBeat='1000']/ID";
    case AnywhereById:
      return "/Devices//*[ID='" + middleId(aDocument) + "']/Name";
  }
  std::abort();
}

void augeasMatch(benchmark::State& aState) {
  Form const form = static_cast<Form>(aState.range(1));
  Documents const document(static_cast<std::size_t>(aState.range(0)) * 1024);
  augeas* tree = aug_init(nullptr, "", AUG_NO_LOAD | AUG_NO_STDINC | AUG_NO_MODL_AUTOLOAD);
  fillAugeas(tree, document);
  std::string const asked = augeasPath(form, document);
  std::string result;
  for (auto _ : aState) {
    result.clear();
    char** hits = nullptr;
    int const count = aug_match(tree, asked.c_str(), &hits);
    for (int index = 0; index < count; ++index) {
      char const* value = nullptr;
      aug_get(tree, hits[index], &value);
      add(result, value);
      std::free(hits[index]);
    }
    std::free(hits);
    benchmark::DoNotOptimize(result.data());
  }
  check(aState, result, expected(form, document));
  aug_close(tree);
}
#endif

void sizesAndForms(benchmark::internal::Benchmark* aBenchmark) {
  aBenchmark->ArgNames({"KB", "form"})->ArgsProduct({{2, 20, 200}, {1, 2, 3, 4}});
}

BENCHMARK(tinyXmlWalk)->Apply(sizesAndForms);
BENCHMARK(getContent)->Apply(sizesAndForms);
BENCHMARK(tinyXmlWalkFirst)->Apply(sizesAndForms);
BENCHMARK(pugiXml)->Apply(sizesAndForms);
#ifdef BENCH_LIBXML2
BENCHMARK(libXml2)->Apply(sizesAndForms);
#endif
#ifdef BENCH_LIBYANG
BENCHMARK(libYang)->Apply(sizesAndForms);
#endif
#ifdef BENCH_AUGEAS
BENCHMARK(augeasMatch)->Apply(sizesAndForms);
#endif

}  // namespace
