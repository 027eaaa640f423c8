// Our own rows, and what bounds them.
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "rows.hpp"
#include "zfxmemory.h"
#include "zjson_expression.h"
#include "zjson_util.h"
#include "zjsondriver.h"

namespace {

struct Own {
  static constexpr const char *kName = bench::kOwn;
  using Document = ZJsonExpression;
  static Document *parse(const std::string &text) {
    return ZJsonExpression_Parse(text.data(), static_cast<int32_t>(text.size()));
  }
  static void release(Document *document) { ZJsonExpression_Delete(document); }
  static std::size_t print(Document *document) {
    char *text = nullptr;
    const std::size_t size = ZJsonExpression_ToString(document, &text, 0);
    ZfxMemFree(text);
    return size;
  }
};

// The sizes of the blocks that a document consists of, in the order in which a parser needs them.
void gather_blocks(const ZJsonValue *value, std::vector<std::size_t> &sizes) {
  if (value->type == ZJSON_STRING) sizes.push_back(std::strlen(value->string) + 1);
  if (value->type == ZJSON_ARRAY) {
    for (int32_t i = 0; i < value->array->count; ++i) {
      gather_blocks(value->array->items[i], sizes);
    }
    sizes.push_back(sizeof(ZJsonArray));
    sizes.push_back(static_cast<std::size_t>(value->array->capacity) * sizeof(void *));
  }
  if (value->type == ZJSON_OBJECT) {
    for (int32_t i = 0; i < value->object->count; ++i) {
      const ZJsonMember *member = value->object->members[i];
      sizes.push_back(std::strlen(member->name) + 1);
      gather_blocks(member->value, sizes);
      sizes.push_back(sizeof(ZJsonMember));
    }
    sizes.push_back(sizeof(ZJsonObject));
    sizes.push_back(static_cast<std::size_t>(value->object->capacity) * sizeof(void *));
  }
  sizes.push_back(sizeof(ZJsonValue));
}

std::vector<std::size_t> block_sizes(const bench::Document &input) {
  ZJsonExpression *document = Own::parse(input.text);
  std::vector<std::size_t> sizes;
  gather_blocks(document->root, sizes);
  ZJsonExpression_Delete(document);
  return sizes;
}

// What malloc and free alone take for a document's blocks: no parser of such documents is faster.
void add_blocks_alone(const bench::Document &input) {
  bench::contender(bench::kParse, input.name, "its blocks alone", [&input](benchmark::State &state) {
    const std::vector<std::size_t> sizes = block_sizes(input);
    std::vector<void *> blocks(sizes.size());
    for (auto _ : state) {
      for (std::size_t i = 0; i < sizes.size(); ++i) {
        blocks[i] = std::malloc(sizes[i]);
      }
      benchmark::ClobberMemory();
      for (void *block : blocks) {
        std::free(block);
      }
    }
  });
}

// What remains of printing when the text is there already: a block for it and a copy.
void add_copy_alone(const bench::Document &input) {
  bench::contender(bench::kPrint, input.name, "a copy of the text", [&input](benchmark::State &state) {
    for (auto _ : state) {
      void *copy = std::malloc(input.text.size() + 1);
      benchmark::DoNotOptimize(std::memcpy(copy, input.text.c_str(), input.text.size() + 1));
      std::free(copy);
    }
  });
}

[[maybe_unused]] const bool added = [] {
  for (const bench::Document &input : bench::documents()) {
    add_blocks_alone(input);
    add_copy_alone(input);
  }
  return bench::add_library<Own>() && bench::add_growth<Own>();
}();

}  // namespace
