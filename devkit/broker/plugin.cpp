#include "devkit/broker/plugin.h"

#include "devkit/broker/base64.h"
#include "devkit/broker/machine.h"
#include "devkit/broker/transaction.h"
#include "devkit/change.h"

#include <dlfcn.h>

#include <chrono>
#include <cstdlib>
#include <memory>

namespace {

using Execute = void(ITransaction*);
using Hash = char*(const char*);

std::string hash(Hash* function, const std::string& password)
{
    const std::unique_ptr<char, decltype(&free)> text(function(password.c_str()), free);
    if (!text) {
        throw BadUse("the plug-in makes no hash of this password");
    }
    return text.get();
}

} // namespace

std::filesystem::path beside_broker(const char* name)
{
    return std::filesystem::read_symlink("/proc/self/exe").replace_filename(name);
}

Answer carry_out(const Command& command, const std::function<void(ITransaction*)>& execute)
{
    Transaction transaction(command);
    const Change change;
    const auto begin = std::chrono::steady_clock::now();
    execute(&transaction);
    const std::chrono::duration<double, std::milli> spent =
        std::chrono::steady_clock::now() - begin;
    return {transaction.getCode(), transaction.responses(), spent.count()};
}

Plugin::Plugin(std::string path)
    : path_(path.empty() ? beside_broker("libsyscmd.so").string() : std::move(path)),
      library_(dlopen(path_.c_str(), RTLD_NOW | RTLD_LOCAL))
{
    if (library_ == nullptr) {
        const std::string why = dlerror();
        const std::string complaint = machine_complaint(path_);
        throw std::runtime_error(complaint.empty() ? why : path_ + ' ' + complaint);
    }
}

template<class Function> Function* Plugin::symbol(const char* name) const
{
    auto* function = reinterpret_cast<Function*>(dlsym(library_, name));
    if (function == nullptr) {
        throw std::runtime_error(path_ + " exports no " + name);
    }
    return function;
}

Answer Plugin::run(const Command& command) const
{
    return carry_out(command, symbol<Execute>("execute"));
}

std::string Plugin::hash_pair(const std::string& password) const
{
    const auto smb = hash(symbol<Hash>("SMB_enc_passwd"), password);
    return base64(smb + ':' + hash(symbol<Hash>("SYS_enc_passwd"), password));
}
