#include "server/store/ListStore.h"

#include <cinttypes>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "appmgr/AppMgrDefs.h"
#include "server/store/EntityKind.h"
#include "server/store/StoreErrors.h"

namespace appmgr::server {
namespace {

using Txn = Store::Transaction;

// A list query put together from the filters a request sets. The text depends only on which
// filters are set, never on their values (those are parameters), so each shape is prepared once
// and cached. The table that drives a query is chosen by the caller from the filters, so that
// the most selective index leads.
class Query {
 public:
  Query(const char* columns, std::string from, const char* order)
      : columns_(columns), from_(std::move(from)), order_(order) {}

  void Join(const char* clause) { from_ += clause; }
  // A condition with one '?' for `value`.
  void Filter(std::string condition, std::variant<uint64_t, std::string_view> value) {
    params_.push_back(value);
    std::string number = "?";
    number += std::to_string(params_.size());
    condition.replace(condition.find('?'), 1, number);
    where_.push_back(std::move(condition));
  }
  void Condition(const char* condition) { where_.push_back(condition); }

  std::string Select() const { return Body() + " ORDER BY " + order_; }
  std::string Count() const { return "SELECT count(*) FROM (" + Body() + ")"; }

  void Bind(Statement& st) const {
    for (size_t i = 0; i < params_.size(); ++i) {
      int index = static_cast<int>(i) + 1;
      if (const uint64_t* v = std::get_if<uint64_t>(&params_[i])) {
        st.BindU64(index, *v);
      } else {
        st.BindText(index, std::get<std::string_view>(params_[i]));
      }
    }
  }

 private:
  std::string Body() const {
    std::string sql = std::string("SELECT ") + columns_ + " FROM " + from_;
    for (size_t i = 0; i < where_.size(); ++i) sql += (i == 0 ? " WHERE " : " AND ") + where_[i];
    return sql;
  }

  const char* columns_;
  std::string from_;
  const char* order_;
  std::vector<std::string> where_;
  std::vector<std::variant<uint64_t, std::string_view>> params_;
};

// Counts, tells the sink, then hands it each row that `read` makes of a result row.
template <class Read>
CLmError RunList(Txn& txn, const Query& query, ListSink& sink, Read read) {
  const std::string countSql = query.Count();
  Statement count = txn.Prepare(countSql.c_str());
  query.Bind(count);
  bool row = false;
  if (CLmError e = count.Step(&row)) return e;
  const auto rows = static_cast<size_t>(row ? count.Int(0) : 0);
  if (CLmError e = sink.Begin(rows)) return e;

  const std::string selectSql = query.Select();
  Statement st = txn.Prepare(selectSql.c_str());
  query.Bind(st);
  size_t given = 0;
  for (;;) {
    if (CLmError e = st.Step(&row)) return e;
    if (!row) break;
    // One snapshot serves both statements, so the rows match the count; a sink sized by it
    // must never be handed one more.
    if (given == rows) break;
    ListRow out;
    read(st, out);
    sink.Row(out);
    ++given;
  }
  if (given != rows) {
    return CLmError::Format(kKpErrInternal, "%s: counted %zu rows, read %zu", txn.operation(), rows,
                            given);
  }
  return CLmError();
}

// An id filter that names an entity: it must exist.
CLmError Require(Txn& txn, EntityKind kind, uint64_t id) {
  return id == 0 ? CLmError() : RequireEntity(txn, kind, id);
}

CLmError RequireRow(Txn& txn, const char* sql, uint64_t id, const char* what) {
  if (id == 0) return CLmError();
  Statement st = txn.Prepare(sql);
  st.BindU64(1, id);
  bool row = false;
  if (CLmError e = st.Step(&row)) return e;
  if (!row) return CLmError::Format(kStoreErrNotFound, "%s %" PRIu64 " does not exist", what, id);
  return CLmError();
}

CLmError RequireAppType(Txn& txn, uint64_t id) {
  return RequireRow(txn, "SELECT 1 FROM app_types WHERE id = ?1", id, "application type");
}

CLmError RequireTree(Txn& txn, const TreeFilter& f) {
  if (CLmError e = Require(txn, EntityKind::kClient, f.clientId)) return e;
  if (CLmError e = RequireAppType(txn, f.appTypeId)) return e;
  if (CLmError e = Require(txn, EntityKind::kInstance, f.instanceId)) return e;
  if (CLmError e = Require(txn, EntityKind::kBackupSet, f.backupSetId)) return e;
  return Require(txn, EntityKind::kClientGroup, f.groupId);
}

// Row readers shared by several lists.
void IdName(const Statement& st, ListRow& row) {
  row.id = st.U64(0);
  row.name = st.TextView(1);
}
void IdNameFlag(const Statement& st, ListRow& row) {
  IdName(st, row);
  row.values[0] = st.U64(2);
}

// Filters of the lists below a client application type: `cat` is joined by the caller.
void TreeFilters(Query& q, const TreeFilter& f) {
  if (f.clientId) q.Filter("cat.client_id = ?", f.clientId);
  if (f.appTypeId) q.Filter("cat.app_type_id = ?", f.appTypeId);
  if (f.groupId) {
    q.Filter(
        "EXISTS (SELECT 1 FROM client_group_members m WHERE m.group_id = ? AND "
        "m.client_id = cat.client_id)",
        f.groupId);
  }
}

// The application id's text form, into `out` (reused from row to row).
void AppIdText(const Statement& st, std::string& out) {
  out.clear();
  // Columns 1..9 are numbers 0..8, 10..12 texts 0..2; the form starts with number 3.
  constexpr int kNumbers[] = {4, 1, 5, 6, 7, 8, 9};
  for (int column : kNumbers) {
    if (!out.empty()) out += KP_STRING_APPLICATIONID_DELIMITER;
    out += std::to_string(st.U64(column));
  }
  for (int column = 10; column <= 12; ++column) {
    out += KP_STRING_APPLICATIONID_DELIMITER;
    out += st.TextView(column);
  }
}

constexpr const char* kAppIdColumns =
    "a.id, a.number0, a.number1, a.number2, a.number3, a.number4, a.number5, a.number6, "
    "a.number7, a.number8, a.text0, a.text1, a.text2";

CLmError AppIdList(Txn& txn, const Query& q, ListSink& sink) {
  std::string text;
  return RunList(txn, q, sink, [&text](const Statement& st, ListRow& row) {
    row.id = st.U64(0);
    AppIdText(st, text);
    row.name = text;
  });
}

}  // namespace

CLmError ListStore::Providers(uint64_t type, ListSink& sink) {
  Txn txn(store_, "provider list", Txn::kRead);
  Query q("id, name, description, enabled, value", "providers", "id");
  if (type) q.Filter("provider_type = ?", type);
  return RunList(txn, q, sink, [](const Statement& st, ListRow& row) {
    IdName(st, row);
    row.text = st.TextView(2);
    row.values[0] = st.U64(3);
    row.values[1] = st.U64(4);
  });
}

CLmError ListStore::AppIds(const uint64_t (&numbers)[5], ListSink& sink) {
  Txn txn(store_, "application id list", Txn::kRead);
  Query q(kAppIdColumns, "app_ids a", "a.id");
  // The five selectors are the first five numbers of the object an id stands for (numbers 3
  // to 7: client, application type, instance, backup set, subclient in the demo's convention).
  static const char* const kConditions[] = {"a.number3 = ?", "a.number4 = ?", "a.number5 = ?",
                                            "a.number6 = ?", "a.number7 = ?"};
  for (int i = 0; i < 5; ++i) {
    if (numbers[i]) q.Filter(kConditions[i], numbers[i]);
  }
  return AppIdList(txn, q, sink);
}

CLmError ListStore::AppIdsByArchiveGroup(uint64_t archiveGroup, uint64_t incrArchiveGroup,
                                         ListSink& sink) {
  Txn txn(store_, "application ids of an archive group", Txn::kRead);
  Query q(kAppIdColumns, "app_ids a", "a.id");
  if (archiveGroup) q.Filter("a.archive_group_id = ?", archiveGroup);
  if (incrArchiveGroup) q.Filter("a.incr_archive_group_id = ?", incrArchiveGroup);
  return AppIdList(txn, q, sink);
}

CLmError ListStore::Domains(uint64_t domainId, ListSink& sink) {
  Txn txn(store_, "domain list", Txn::kRead);
  if (CLmError e = Require(txn, EntityKind::kDomain, domainId)) return e;
  Query q("id, text1", "domain", "id");
  if (domainId) q.Filter("id = ?", domainId);
  return RunList(txn, q, sink, IdName);
}

CLmError ListStore::Clients(const ClientFilter& f, ListSink& sink) {
  Txn txn(store_, "client list", Txn::kRead);
  if (CLmError e = RequireAppType(txn, f.appTypeId)) return e;
  if (CLmError e = Require(txn, EntityKind::kClientGroup, f.groupId)) return e;
  // Driven by the group's members or the application type's installations when one is named,
  // else by the clients themselves.
  const char* columns =
      f.hostNames ? "c.id, c.host_name, c.platform_type" : "c.id, c.name, c.platform_type";
  Query q(columns, "clients c", "c.id");
  if (f.groupId) {
    // The members come in client order already: no sort.
    q = Query(columns, "client_group_members m JOIN clients c ON c.id = m.client_id",
              "m.client_id");
    q.Filter("m.group_id = ?", f.groupId);
    if (f.appTypeId) {
      q.Filter(
          "EXISTS (SELECT 1 FROM client_app_types cat WHERE cat.client_id = c.id AND "
          "cat.app_type_id = ? AND cat.contents_deleted = 0)",
          f.appTypeId);
    }
  } else if (f.appTypeId) {
    q = Query(columns, "client_app_types cat JOIN clients c ON c.id = cat.client_id", "c.id");
    q.Filter("cat.app_type_id = ?", f.appTypeId);
    q.Condition("cat.contents_deleted = 0");
  }
  if (f.platformMask) q.Filter("(c.platform_type & ?) <> 0", f.platformMask);
  return RunList(txn, q, sink, IdNameFlag);
}

CLmError ListStore::AppTypes(uint64_t clientId, bool withDeleted, ListSink& sink) {
  Txn txn(store_, "application type list", Txn::kRead);
  if (clientId == 0) return RunList(txn, Query("id, name", "app_types", "id"), sink, IdName);
  if (CLmError e = Require(txn, EntityKind::kClient, clientId)) return e;
  Query q("t.id, t.name", "client_app_types cat JOIN app_types t ON t.id = cat.app_type_id",
          "t.id");
  q.Filter("cat.client_id = ?", clientId);
  if (!withDeleted) q.Condition("cat.contents_deleted = 0");
  return RunList(txn, q, sink, IdName);
}

CLmError ListStore::Instances(const TreeFilter& f, ListSink& sink) {
  Txn txn(store_, "instance list", Txn::kRead);
  if (CLmError e = RequireTree(txn, f)) return e;
  Query q("i.id, i.name", "instances i JOIN client_app_types cat ON cat.id = i.client_app_type_id",
          "i.id");
  TreeFilters(q, f);
  if (!f.withDeleted) q.Condition("i.contents_deleted = 0");
  return RunList(txn, q, sink, IdName);
}

CLmError ListStore::BackupSets(const TreeFilter& f, ListSink& sink) {
  Txn txn(store_, "backup set list", Txn::kRead);
  if (CLmError e = RequireTree(txn, f)) return e;
  Query q("b.id, b.name, b.contents_deleted", "backup_sets b", "b.id");
  if (f.clientId || f.appTypeId || f.groupId) {
    q.Join(
        " JOIN instances i ON i.id = b.instance_id"
        " JOIN client_app_types cat ON cat.id = i.client_app_type_id");
    TreeFilters(q, f);
  }
  if (f.instanceId) q.Filter("b.instance_id = ?", f.instanceId);
  if (!f.withDeleted) q.Condition("b.contents_deleted = 0");
  return RunList(txn, q, sink, IdNameFlag);
}

CLmError ListStore::Subclients(const TreeFilter& f, ListSink& sink) {
  Txn txn(store_, "subclient list", Txn::kRead);
  if (CLmError e = RequireTree(txn, f)) return e;
  Query q("s.id, s.name, s.contents_deleted", "subclients s", "s.id");
  const bool aboveInstance = f.clientId || f.appTypeId || f.groupId;
  if (aboveInstance || f.instanceId) q.Join(" JOIN backup_sets b ON b.id = s.backup_set_id");
  if (aboveInstance) {
    q.Join(
        " JOIN instances i ON i.id = b.instance_id"
        " JOIN client_app_types cat ON cat.id = i.client_app_type_id");
    TreeFilters(q, f);
  }
  if (f.instanceId) q.Filter("b.instance_id = ?", f.instanceId);
  if (f.backupSetId) q.Filter("s.backup_set_id = ?", f.backupSetId);
  if (!f.withDeleted) q.Condition("s.contents_deleted = 0");
  return RunList(txn, q, sink, IdNameFlag);
}

CLmError ListStore::Siblings(uint64_t subclientId, bool withDeleted, SubclientPlace* place,
                             ListSink& sink) {
  Txn txn(store_, "sibling subclient list", Txn::kRead);
  Statement where = txn.Prepare(
      "SELECT cat.client_id, cat.app_type_id, i.id, b.id,"
      " (SELECT st.default_subclient_id FROM backup_set_stores st"
      "  WHERE st.backup_set_id = b.id ORDER BY st.position LIMIT 1)"
      " FROM subclients s JOIN backup_sets b ON b.id = s.backup_set_id"
      " JOIN instances i ON i.id = b.instance_id"
      " JOIN client_app_types cat ON cat.id = i.client_app_type_id WHERE s.id = ?1");
  where.BindU64(1, subclientId);
  bool row = false;
  if (CLmError e = where.Step(&row)) return e;
  if (!row) return EntityNotFound(EntityKind::kSubclient, subclientId);
  SubclientPlace found{where.U64(0), where.U64(1), where.U64(2), where.U64(3), where.U64(4)};

  Query q("s.id, s.name", "subclients s", "s.id");
  q.Filter("s.backup_set_id = ?", found.backupSetId);
  q.Filter("s.id <> ?", subclientId);
  if (!withDeleted) q.Condition("s.contents_deleted = 0");
  if (CLmError e = RunList(txn, q, sink, IdName)) return e;
  *place = found;
  return CLmError();
}

CLmError ListStore::ClientGroups(uint64_t a, uint64_t b, ListSink& sink) {
  Txn txn(store_, "client group list", Txn::kRead);
  if (CLmError e = Require(txn, EntityKind::kClient, a)) return e;
  if (CLmError e = Require(txn, EntityKind::kClient, b)) return e;
  if (a == 0) std::swap(a, b);
  Query q("g.id, g.name", "client_groups g", "g.id");
  if (a) {
    q = Query("g.id, g.name", "client_group_members ma JOIN client_groups g ON g.id = ma.group_id",
              "g.id");
    q.Filter("ma.client_id = ?", a);
  }
  if (b) {
    q.Filter(
        "EXISTS (SELECT 1 FROM client_group_members mb WHERE mb.group_id = g.id AND "
        "mb.client_id = ?)",
        b);
  }
  return RunList(txn, q, sink, IdName);
}

CLmError ListStore::DomainClients(std::string_view domain, ListSink& sink) {
  Txn txn(store_, "client list of a domain", Txn::kRead);
  Query q("d.client_id, c.name, d.domain, d.value1, d.value2, d.value3",
          "exdm_domain_clients d JOIN clients c ON c.id = d.client_id", "d.client_id, d.domain");
  if (!domain.empty()) q.Filter("d.domain = ?", domain);
  return RunList(txn, q, sink, [](const Statement& st, ListRow& row) {
    IdName(st, row);
    row.text = st.TextView(2);
    for (int i = 0; i < 3; ++i) row.values[i] = st.U64(3 + i);
  });
}

CLmError ListStore::Clouds(uint64_t type, ListSink& sink) {
  Txn txn(store_, "cloud list", Txn::kRead);
  Query q("id, name", "clouds", "id");
  if (type) q.Filter("cloud_type = ?", type);
  return RunList(txn, q, sink, IdName);
}

CLmError ListStore::CloudClients(uint64_t cloudId, ListSink& sink) {
  // The cloud is the list's subject, not a filter: 0 names no cloud.
  if (cloudId == 0) return CLmError(kStoreErrNotFound, "cloud 0 does not exist");
  Txn txn(store_, "client list of a cloud", Txn::kRead);
  if (CLmError e = RequireRow(txn, "SELECT 1 FROM clouds WHERE id = ?1", cloudId, "cloud")) {
    return e;
  }
  Query q("client_id, access_node_id", "cloud_clients", "client_id");
  q.Filter("cloud_id = ?", cloudId);
  return RunList(txn, q, sink, [](const Statement& st, ListRow& row) {
    row.id = st.U64(0);
    row.values[0] = st.U64(1);  // NULL reads as 0
  });
}

}  // namespace appmgr::server
