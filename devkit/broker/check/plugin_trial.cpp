/**
 * plugin-trial LIBRARY: loads a plug-in and has it carry out an unknown operation; prints each call
 * that it makes, a line each.
 *
 * The transaction is no C++ class: its virtual table is written down here slot by slot, so that the
 * same compiler's idea of a class is not on both sides.
 */
#include <dlfcn.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <string>

namespace {

struct Object;
using Text = const std::string*; // a reference is passed as a pointer

const std::string NOTHING;
constexpr int LOG_NOTHING = -1; // the journal's threshold below every level

struct Table {
    std::ptrdiff_t offset_to_top;
    const void* type;
    // The object points here.
    void (*destroy)(Object*);
    void (*destroy_and_delete)(Object*);
    Text (*getGuid)(const Object*);
    Text (*getMethod)(const Object*);
    Text (*getBody)(const Object*);
    Text (*getResponse)(Object*);
    Text (*getRequest)(const Object*);
    Text (*getMoniker)(const Object*);
    Text (*getResponseURL)(const Object*);
    int (*getCode)(const Object*);
    int (*getLogLevel)(const Object*);
    const FILE* (*getOutputFile)(const Object*);
    Text (*getTempPipeName)(const Object*);
    bool (*getRequestParam)(const Object*, int, std::string*);
    bool (*getAuthInfo)(const Object*, std::string*);
    bool (*getResponseParam)(const Object*, int, std::string*);
    void (*setCode)(Object*, int);
    void (*setMoniker)(Object*, Text);
    void (*setMethod)(Object*, Text);
    void (*setBodyType)(Object*, Text);
    int (*addResponseParam)(Object*, Text);
    void (*setOutputFile)(Object*, FILE*);
    void (*setTempPipeName)(Object*, Text);
    void (*setTempZipPath)(Object*, Text);
    void (*setZipFlag)(Object*, int);
    int (*getZipFlag)(const Object*);
    void (*setResponseURL)(Object*, Text);
    void (*setRangeStart)(Object*, Text);
    void (*setRangeEnd)(Object*, Text);
    Text (*getRangeStart)(const Object*);
    Text (*getRangeEnd)(const Object*);
};

struct Object {
    const void* table;
};

/** The calls that a plug-in makes are answered; any other is told by its slot's name. */
void say(const char* what, const char* value)
{
    std::printf("%s %s\n", what, value);
}

template<int slot> Text other_text(const Object*)
{
    std::printf("text of slot %d\n", slot);
    return &NOTHING;
}
template<int slot> Text other_text_changing(Object* object)
{
    return other_text<slot>(object);
}
template<int slot> int other_number(const Object*)
{
    std::printf("number of slot %d\n", slot);
    return 0;
}
template<int slot, class Value> void other_setting(Object*, Value)
{
    std::printf("setting of slot %d\n", slot);
}
void destroyed(Object*)
{
    std::puts("destroyed");
}
const FILE* output_file(const Object*)
{
    std::puts("output file");
    return nullptr;
}
bool no_response_param(const Object*, int, std::string*)
{
    std::puts("response parameter");
    return false;
}

const Table TABLE = {
    .offset_to_top = 0,
    .type = nullptr,
    .destroy = destroyed,
    .destroy_and_delete = destroyed,
    .getGuid = other_text<2>,
    .getMethod = other_text<3>,
    .getBody = other_text<4>,
    .getResponse = other_text_changing<5>,
    .getRequest = other_text<6>,
    .getMoniker = other_text<7>,
    .getResponseURL = other_text<8>,
    .getCode = other_number<9>,
    .getLogLevel = [](const Object*) { return LOG_NOTHING; },
    .getOutputFile = output_file,
    .getTempPipeName = other_text<12>,
    .getRequestParam =
        [](const Object*, int index, std::string* value) {
            if (index != 0) {
                return false;
            }
            *value = "broker-check";
            return true;
        },
    .getAuthInfo = [](const Object*, std::string*) { return false; },
    .getResponseParam = no_response_param,
    .setCode = [](Object*, int code) { std::printf("code %d\n", code); },
    .setMoniker = [](Object*, Text text) { say("moniker", text->c_str()); },
    .setMethod = [](Object*, Text text) { say("method", text->c_str()); },
    .setBodyType = [](Object*, Text text) { say("body type", text->c_str()); },
    .addResponseParam =
        [](Object*, Text text) {
            say("response", text->c_str());
            return 0;
        },
    .setOutputFile = other_setting<21, FILE*>,
    .setTempPipeName = other_setting<22, Text>,
    .setTempZipPath = other_setting<23, Text>,
    .setZipFlag = other_setting<24, int>,
    .getZipFlag = other_number<25>,
    .setResponseURL = other_setting<26, Text>,
    .setRangeStart = other_setting<27, Text>,
    .setRangeEnd = other_setting<28, Text>,
    .getRangeStart = other_text<29>,
    .getRangeEnd = other_text<30>,
};

} // namespace

int main(int argc, char** argv)
{
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ); // what was said before a crash is kept
    void* library = argc == 2 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : nullptr;
    auto* execute = library == nullptr
                        ? nullptr
                        : reinterpret_cast<void (*)(Object*)>(dlsym(library, "execute"));
    if (execute == nullptr) {
        std::puts(argc == 2 ? dlerror() : "usage: plugin-trial LIBRARY");
        _exit(1);
    }
    std::puts("loaded");
    Object transaction = {&TABLE.destroy};
    execute(&transaction);
    _exit(0); // the library's destructors are not asked about
}
