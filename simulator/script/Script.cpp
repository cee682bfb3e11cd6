#include "simulator/script/Script.h"

#include <duktape.h>

#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <utility>

#include "DeviceClock/Clock.h"

namespace simulator {
namespace {

constexpr std::size_t kMostMemory = 32 << 20;
/// The engine asks after every 262,144 instructions: some fifteen million of them are half a second or so.
constexpr int kMostChecks = 60;

/// Memory of the engine, counted; each block begins with its size.
struct Memory {
  static constexpr std::size_t kHead = alignof(std::max_align_t);
  std::size_t used = 0;

  void* resized(void* block, std::size_t size) {
    auto* const start = block ? static_cast<char*>(block) - kHead : nullptr;
    std::size_t before = 0;
    if (start) std::memcpy(&before, start, sizeof before);
    if (size == 0) {
      used -= before;
      std::free(start);
      return nullptr;
    }
    if (size > kMostMemory || used - before + size > kMostMemory) return nullptr;
    auto* const made = static_cast<char*>(std::realloc(start, size + kHead));
    if (!made) return nullptr;
    used = used - before + size;
    std::memcpy(made, &size, sizeof size);
    return made + kHead;
  }
};

// What stands around scripts. A script's own variables are those of a function, so that flows depend on `output` alone.
constexpr const char* kPrelude = R"js((function (log) {
  function shown(value) {
    if (typeof value !== 'object' || value === null) return String(value);
    try { return JSON.stringify(value); } catch (error) { return String(value); }
  }
  function say() { log(Array.prototype.map.call(arguments, shown).join(' ')); }
  function refuse() { throw new Error('the phone is not on a network: scripts cannot use http'); }
  this.console = {log: say, info: say, warn: say, error: say};
  this.output = {};
  this.maestro = {platform: 'ios', copiedText: ''};
  this.http = {get: refuse, post: refuse, put: refuse, delete: refuse, request: refuse};
  this.json = function (text) { return JSON.parse(text); };
}))js";

}  // namespace

struct Script::Engine {
  Memory memory;
  std::minstd_rand chance;
  std::function<void(const std::string&)> log;
  int checksLeft = kMostChecks;
  duk_context* context = nullptr;

  Engine(std::uint32_t seed, std::function<void(const std::string&)> sink)
      : chance(seed), log(std::move(sink)) {
    context = duk_create_heap(
        [](void* engine, duk_size_t size) {
          return size ? static_cast<Engine*>(engine)->memory.resized(nullptr, size) : nullptr;
        },
        [](void* engine, void* block, duk_size_t size) {
          return static_cast<Engine*>(engine)->memory.resized(block, size);
        },
        [](void* engine, void* block) {
          if (block) static_cast<Engine*>(engine)->memory.resized(block, 0);
        },
        this,
        [](void*, const char* message) {
          std::fprintf(stderr, "the script engine failed: %s\n", message ? message : "");
          std::abort();
        });
    if (!context) std::abort();
    duk_eval_string(context, kPrelude);
    duk_push_global_object(context);
    duk_push_c_function(context, &Engine::say, 1);
    duk_call_method(context, 1);
    duk_pop(context);
  }
  ~Engine() { duk_destroy_heap(context); }
  Engine(const Engine&) = delete;

  static Engine& of(duk_context* context) {
    duk_memory_functions functions;
    duk_get_memory_functions(context, &functions);
    return *static_cast<Engine*>(functions.udata);
  }
  static duk_ret_t say(duk_context* context) {
    const auto& log = of(context).log;
    if (log) log(duk_safe_to_string(context, 0));
    return 0;
  }

  ScriptProblem compiled(const std::string& text, duk_uint_t flags);
  /// Runs `work` with `argument`; what it throws is the problem, otherwise it has left one value.
  ScriptProblem guarded(duk_safe_call_function work, void* argument) {
    checksLeft = kMostChecks;
    if (duk_safe_call(context, work, argument, 0, 1) == DUK_EXEC_SUCCESS) return {};
    ScriptProblem problem;
    if (duk_is_object(context, -1)) {
      duk_get_prop_string(context, -1, "lineNumber");
      problem.line = duk_to_int(context, -1);
      duk_pop(context);
    }
    problem.what = checksLeft < 0 ? "it does not end" : duk_safe_to_string(context, -1);
    if (problem.what.empty()) problem.what = "it failed";
    if (problem.what.starts_with("SyntaxError"))
      problem.what += "; scripts are ECMAScript 5: var, function and + for texts";
    return problem;
  }
};

namespace {

struct Source {
  const std::string& text;
  duk_uint_t flags;
};

duk_ret_t compile(duk_context* context, void* argument) {
  const auto& source = *static_cast<const Source*>(argument);
  duk_push_lstring(context, source.text.data(), source.text.size());
  duk_push_string(context, "script");
  duk_compile(context, source.flags);
  return 1;
}

duk_ret_t call(duk_context* context, void* argument) {
  compile(context, argument);
  duk_call(context, 0);
  return 1;
}

duk_ret_t callForText(duk_context* context, void* argument) {
  call(context, argument);
  duk_to_string(context, -1);
  return 1;
}

/// As a function's body, with the first line where it is.
std::string asFunction(const std::string& script) {
  return "(function () {" + script + "\n})()";
}

/// What is no expression by itself could close the parenthesis that it is put into.
std::string asExpression(const std::string& expression) {
  return "(" + expression + "\n)";
}

}  // namespace

/// Compiles what is only to be looked at.
Script::Engine& Script::reader() {
  static Engine& engine = *new Engine(1, {});
  return engine;
}

ScriptProblem Script::Engine::compiled(const std::string& text, duk_uint_t flags) {
  Source source{text, flags};
  const ScriptProblem problem = guarded(&compile, &source);
  duk_pop(context);
  return problem;
}

ScriptProblem Script::syntaxProblem(const std::string& expression) {
  return reader().compiled(asExpression(expression), DUK_COMPILE_EVAL);
}

ScriptProblem Script::scriptSyntaxProblem(const std::string& script) {
  return reader().compiled(asFunction(script), DUK_COMPILE_EVAL);
}

bool Script::knows(const std::string& name) {
  duk_context* const context = reader().context;
  const bool known = duk_get_global_lstring(context, name.data(), name.size()) != 0;
  duk_pop(context);
  return known;
}

Script::Script(std::uint32_t seed, std::function<void(const std::string&)> log)
    : engine_(std::make_unique<Engine>(seed, std::move(log))) {}

Script::~Script() = default;

void Script::setLog(std::function<void(const std::string&)> log) {
  engine_->log = std::move(log);
}

void Script::setVariables(Variables variables) {
  duk_context* const context = engine_->context;
  duk_push_global_object(context);
  for (const auto& [name, value] : variables_) {
    if (!variables.contains(name)) duk_del_prop_lstring(context, -1, name.data(), name.size());
  }
  for (const auto& [name, value] : variables) {
    duk_push_lstring(context, value.data(), value.size());
    duk_put_prop_lstring(context, -2, name.data(), name.size());
  }
  duk_pop(context);
  variables_ = std::move(variables);
}

void Script::declare(const std::string& name) {
  if (variables_.contains(name) || knows(name)) return;
  duk_push_undefined(engine_->context);
  duk_put_global_lstring(engine_->context, name.data(), name.size());
}

void Script::setCopiedText(const std::string& text) {
  copiedText_ = text;
  duk_context* const context = engine_->context;
  duk_get_global_string(context, "maestro");
  duk_push_lstring(context, text.data(), text.size());
  duk_put_prop_string(context, -2, "copiedText");
  duk_pop(context);
}

std::string Script::evaluate(const std::string& expression, ScriptProblem& problem) {
  const std::string text = asExpression(expression);
  Source source{text, DUK_COMPILE_EVAL};
  problem = engine_->guarded(&callForText, &source);
  duk_size_t length = 0;
  const char* const value = problem ? nullptr : duk_get_lstring(engine_->context, -1, &length);
  std::string result = value ? std::string(value, length) : "";
  duk_pop(engine_->context);
  return result;
}

ScriptProblem Script::run(const std::string& script) {
  const std::string text = asFunction(script);
  Source source{text, DUK_COMPILE_EVAL};
  const ScriptProblem problem = engine_->guarded(&call, &source);
  duk_pop(engine_->context);
  return problem;
}

}  // namespace simulator

using simulator::Script;

// What the engine asks while it runs (its settings are in CMakeLists.txt).
extern "C" int tellvaneScriptIsOver(void* engine) {
  return --static_cast<Script::Engine*>(engine)->checksLeft < 0 ? 1 : 0;
}
extern "C" double tellvaneScriptRandom(void* engine) {
  auto& chance = static_cast<Script::Engine*>(engine)->chance;
  return std::uniform_real_distribution<double>(0, 1)(chance);
}
extern "C" double tellvaneScriptNow() {
  const auto now = ios::Clock::shared().wallTime().time_since_epoch();
  return static_cast<double>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}
