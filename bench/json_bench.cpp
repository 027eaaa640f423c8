// Parsing, releasing and printing JSON, against cJSON where it was found when this was built. The documents
// are the files twitter.json, citm_catalog.json and canada.json in the folder that ZORVCRT_BENCH_JSON names,
// and one of 300 bytes that is always there. Every contender of a document runs in this program, so take
// ratios.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "zfxmemory.h"
#include "zjson_expression.h"
#include "zjson_util.h"
#include "zjsondriver.h"
#ifdef HAVE_CJSON
#include <cJSON.h>
#endif

namespace {

constexpr char kSmall[] =
    R"({"id":48213,"name":"Ada Example","mail":"ada@example.org","active":true,"score":87.25,
 "tags":["alpha","beta","gamma"],"address":{"street":"1 Long Road","city":"Springfield","zip":"12345"},
 "orders":[{"no":1,"total":19.5},{"no":2,"total":7.75}],"note":null,"comment":"nothing to add, really"})";

struct Input {
  std::string name;
  std::string text;
};

std::vector<Input> inputs() {
  std::vector<Input> found = {{"small", kSmall}};
  const char *folder = std::getenv("ZORVCRT_BENCH_JSON");
  if (folder == nullptr)
    std::fprintf(stderr, "ZORVCRT_BENCH_JSON names no folder: only the small document\n");
  for (const char *name : {"twitter", "citm_catalog", "canada"}) {
    if (folder == nullptr) break;
    std::ifstream file(std::string(folder) + "/" + name + ".json", std::ios::binary);
    if (file) {
      found.push_back({name, {std::istreambuf_iterator<char>(file), {}}});
    } else {
      std::fprintf(stderr, "%s.json is missing\n", name);
    }
  }
  return found;
}

int32_t length_of(const Input &input) {
  return static_cast<int32_t>(input.text.size());
}

void set_bytes(benchmark::State &state, const Input &input) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * length_of(input));
}

void parse_and_release(benchmark::State &state, const Input &input) {
  for (auto _ : state) {
    ZJsonExpression_Delete(ZJsonExpression_Parse(input.text.data(), length_of(input)));
  }
  set_bytes(state, input);
}

void print(benchmark::State &state, const Input &input, int32_t pretty) {
  ZJsonExpression *document = ZJsonExpression_Parse(input.text.data(), length_of(input));
  for (auto _ : state) {
    char *text = nullptr;
    ZJsonExpression_ToString(document, &text, pretty);
    ZfxMemFree(text);
  }
  ZJsonExpression_Delete(document);
  set_bytes(state, input);
}

// The sizes of the blocks that a document consists of, in the order in which a parser needs them.
void gather_blocks(const ZJsonValue *value, std::vector<std::size_t> &sizes) {
  if (value->type == ZJSON_STRING) sizes.push_back(std::string(value->string).size() + 1);
  if (value->type == ZJSON_ARRAY) {
    for (int32_t i = 0; i < value->array->count; ++i)
      gather_blocks(value->array->items[i], sizes);
    sizes.push_back(sizeof(ZJsonArray));
    sizes.push_back(static_cast<std::size_t>(value->array->capacity) * sizeof(void *));
  }
  if (value->type == ZJSON_OBJECT) {
    for (int32_t i = 0; i < value->object->count; ++i) {
      const ZJsonMember *member = value->object->members[i];
      sizes.push_back(std::string(member->name).size() + 1);
      gather_blocks(member->value, sizes);
      sizes.push_back(sizeof(ZJsonMember));
    }
    sizes.push_back(sizeof(ZJsonObject));
    sizes.push_back(static_cast<std::size_t>(value->object->capacity) * sizeof(void *));
  }
  sizes.push_back(sizeof(ZJsonValue));
}

// What malloc and free alone take for a document's blocks, in the order of their making: the limit.
void blocks_alone(benchmark::State &state, const Input &input) {
  ZJsonExpression *document = ZJsonExpression_Parse(input.text.data(), length_of(input));
  std::vector<std::size_t> sizes;
  gather_blocks(document->root, sizes);
  ZJsonExpression_Delete(document);
  std::vector<void *> blocks(sizes.size());
  for (auto _ : state) {
    for (std::size_t i = 0; i < sizes.size(); ++i)
      blocks[i] = std::malloc(sizes[i]);
    for (void *block : blocks)
      std::free(block);
  }
  set_bytes(state, input);
}

#ifdef HAVE_CJSON
void parse_and_release_cjson(benchmark::State &state, const Input &input) {
  for (auto _ : state) {
    cJSON_Delete(cJSON_ParseWithLength(input.text.data(), input.text.size()));
  }
  set_bytes(state, input);
}

void print_cjson(benchmark::State &state, const Input &input) {
  cJSON *document = cJSON_ParseWithLength(input.text.data(), input.text.size());
  for (auto _ : state) {
    std::free(cJSON_PrintUnformatted(document));
  }
  cJSON_Delete(document);
  set_bytes(state, input);
}
#endif

}  // namespace

int main(int count, char **words) {
  static const std::vector<Input> documents = inputs();
  for (const Input &input : documents) {
    const auto add = [&](const char *what, auto function) {
      benchmark::RegisterBenchmark((input.name + "/" + what).c_str(), function);
    };
    add("parse", [&](benchmark::State &state) { parse_and_release(state, input); });
    add("blocks alone", [&](benchmark::State &state) { blocks_alone(state, input); });
#ifdef HAVE_CJSON
    add("cJSON parse", [&](benchmark::State &state) { parse_and_release_cjson(state, input); });
#endif
    add("print compact", [&](benchmark::State &state) { print(state, input, 0); });
    add("print pretty", [&](benchmark::State &state) { print(state, input, 1); });
#ifdef HAVE_CJSON
    add("cJSON print compact", [&](benchmark::State &state) { print_cjson(state, input); });
#endif
  }
  benchmark::Initialize(&count, words);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
