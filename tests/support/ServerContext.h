#pragma once

#include "support/Script.h"
#include "support/ScriptedTree.h"
#include "support/ServerLog.h"
#include "support/ServerOptions.h"
#include "support/Socket.h"

#include <map>
#include <memory>
#include <mutex>
#include <optional>

namespace venlo::test
{

/// What the sessions of one scripted server share with it and with the test.
struct ServerContext {
    ServerOptions options;
    ScriptedTree tree;
    Script script;
    ServerLog log;
    std::unique_ptr<StopBell> bell;

    void setRawListing(const QByteArray &folder, const QByteArray &bytes)
    {
        const std::scoped_lock lock(m_mutex);
        m_rawListings[folder] = bytes;
    }
    [[nodiscard]] std::optional<QByteArray> rawListing(const QByteArray &folder) const
    {
        const std::scoped_lock lock(m_mutex);
        const auto found = m_rawListings.find(folder);
        return found == m_rawListings.end() ? std::nullopt : std::optional(found->second);
    }

private:
    mutable std::mutex m_mutex;
    std::map<QByteArray, QByteArray> m_rawListings;
};

} // namespace venlo::test
