#include "devkit/boxwelld/transactions.h"

#include "devkit/boxwelld/reply.h"
#include "devkit/boxwelld/request.h"

namespace {

/** The changes, a function for each kind of request. */
struct Change {
    Store& store;

    void operator()(const QueryAccounts&) const {}
    void operator()(const AddAccount& request) const { store.add_account(request.fields); }
    void operator()(const SetAccount& request) const
    {
        store.set_account(request.id, request.fields);
    }
    void operator()(const DeleteAccount& request) const { store.delete_account(request.id); }
    void operator()(const AddRemoteUser& request) const { store.add_remote_user(request.user); }
    void operator()(const DeleteRemoteUser& request) const
    {
        store.delete_remote_user(request.name);
    }
    void operator()(const SetCloudOwner& request) const { store.set_cloud_owner(request.name); }
};

} // namespace

std::string carry_out(Store& store, const std::string& request)
{
    Envelope envelope;
    try {
        const Request what = read_request(request, envelope);
        if (const auto* query = std::get_if<QueryAccounts>(&what))
            return success_reply(
                envelope, store.find_accounts(query->property, query->match, query->value)
            );
        store.change([&] { std::visit(Change{store}, what); });
        return success_reply(envelope, {});
    } catch (const std::exception& failure) {
        return failure_reply(envelope, failure.what());
    }
}

std::string refuse(const std::string& request, const std::optional<std::string>& detail)
{
    Envelope envelope;
    try {
        read_request(request, envelope);
    } catch (const Refusal&) { // the envelope holds what there is
    }
    return failure_reply(envelope, detail);
}
