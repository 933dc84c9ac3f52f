#include "db/Database.h"
#include "db/Store.h"

namespace venlo
{

Transaction::Transaction(Database &database) : m_database(database)
{
    m_database.store().begin();
}

Transaction::~Transaction()
{
    if (!m_done)
        m_database.store().rollback();
}

void Transaction::commit()
{
    m_database.store().commit();
    m_done = true;
}

} // namespace venlo
