#include "flib/io/unit.h"

#include <pthread.h>

#include <map>
#include <memory>
#include <new>

#include "flib/io/atomic_file.h"
#include "flib/io/detail/record_file.h"
#include "flib/io/stop_run.h"

namespace flib {
namespace {

struct open_file {
    std::unique_ptr<record_file> input;  // null for an output unit
    std::string output_path;
    std::string output;
};

using unit_table = std::map<std::int32_t, open_file>;

pthread_key_t make_key() {
    pthread_key_t key{};
    const int error =
        pthread_key_create(&key, [](void* units) { delete static_cast<unit_table*>(units); });
    if (error != 0) throw run_error("no table of units: " + errno_text(error));
    return key;
}

/// The table of the thread's open units: the only state that outlives a call.
unit_table& open_units() {
    // Not thread_local: to have that destroyed takes memory too, and without it the run would end
    // by a signal.
    static const pthread_key_t key = make_key();
    if (void* const units = pthread_getspecific(key)) return *static_cast<unit_table*>(units);
    auto units = std::make_unique<unit_table>();
    if (pthread_setspecific(key, units.get()) != 0) throw std::bad_alloc();
    return *units.release();
}

[[noreturn]] void fail(std::int32_t fid, std::string_view message) {
    throw run_error("unit " + std::to_string(fid) + " " + std::string(message));
}

open_file& add_unit(std::int32_t fid) {
    const auto [at, added] = open_units().try_emplace(fid);
    if (!added) fail(fid, "is open already");
    return at->second;
}

open_file& output_of(std::int32_t fid) {
    const auto at = open_units().find(fid);
    if (at == open_units().end() || at->second.input) fail(fid, "is not open for writing");
    return at->second;
}

}  // namespace

record_file& input_of(std::int32_t fid) {
    const auto at = open_units().find(fid);
    if (at == open_units().end() || !at->second.input) fail(fid, "is not open for reading");
    return *at->second.input;
}

void get_free_fid(std::int32_t& fid) {
    fid = 100;
    while (unit_is_open(fid)) ++fid;
}

void open_old(std::int32_t fid, std::string_view fname, open_at where) {
    auto input = std::make_unique<record_file>(std::string(trim_right(fname)));
    if (where == open_at::end) input->go_to_end();
    add_unit(fid).input = std::move(input);
}

bool unit_is_open(std::int32_t fid) {
    return open_units().count(fid) != 0;
}

void close_unit(std::int32_t fid) {
    open_units().erase(fid);
}

bool read_record(std::int32_t fid, text_span line) {
    return input_of(fid).read(line);
}

void require_record(std::int32_t fid, text_span line) {
    record_file& file = input_of(fid);
    if (!file.read(line)) throw file.error_here("the file ends where a further line was expected");
}

void skip_records(std::int32_t fid, std::int32_t count) {
    for (; count > 0; --count) require_record(fid, {});
}

bool skip_record(std::int32_t fid) {
    return input_of(fid).read({});
}

void step_back(std::int32_t fid) {
    input_of(fid).step_back();
}

void rewind_unit(std::int32_t fid) {
    input_of(fid).rewind();
}

void go_to_end(std::int32_t fid) {
    input_of(fid).go_to_end();
}

bool is_past_end(std::int32_t fid) {
    return input_of(fid).past_end();
}

io_error error_at_last_record(std::int32_t fid, std::string_view message) {
    return input_of(fid).error_at_last_record(message);
}

bool find_forward(std::int32_t fid, const line_test& test, text_span line, std::int64_t most) {
    return input_of(fid).find_forward(test, line, most);
}

bool find_backward(std::int32_t fid, const line_test& test, text_span line) {
    return input_of(fid).find_backward(test, line);
}

bool find_last(std::int32_t fid, const line_test& test, text_span line) {
    return input_of(fid).find_last(test, line);
}

void open_replace(std::int32_t fid, std::string_view fname) {
    add_unit(fid).output_path = trim_right(fname);
}

void write_record(std::int32_t fid, std::string_view record) {
    std::string& output = output_of(fid).output;
    output += record;
    output += '\n';
}

void commit_unit(std::int32_t fid) {
    const open_file written = std::move(output_of(fid));
    close_unit(fid);
    replace_file(written.output_path, written.output);
}

input_unit::input_unit(std::string_view fname, open_at where) {
    get_free_fid(fid_);
    open_old(fid_, fname, where);
}

input_unit::~input_unit() {
    close_unit(fid_);
}

}  // namespace flib
