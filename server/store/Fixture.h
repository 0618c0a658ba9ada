// Fixtures: a JSON description of an installation, loaded into the store in one transaction.
//
// The file is one object. "format" (required) is 1. Every other member is optional and is a
// list of entries, inserted in the order below, so an entry may refer to any entry of an
// earlier list (or already in the database) by its id:
//
//   domain          one object: id, id2, id3, id4, text1 ... text6, number
//   appTypes        {id, name}
//   clients         {id, name, hostName, platformType, int3 ... int12, text3 ... text8,
//                    platforms: [{value, text}] (at most 3, in slot order),
//                    applications: [{id, appType, value, contentsDeleted}]}
//   clientGroups    {id, name, int2 ... int6, text2, text3, members: [client id, ...]}
//   instances       {id, client, appType, name, value, attr2, attr3, attr4, text,
//                    contentsDeleted, content: [{entry, type}]}
//   backupSets      {id, instance, name, value, description, contentsDeleted,
//                    subclients: [{id, name, guid, value, attr2, attr3, attr4, text,
//                                  contentFlag, contentsDeleted, content: [{entry, type}],
//                                  storeAssociations: [name], directoryAssociations: [name]}],
//                    stores: [{name, defaultSubclient}],
//                    wildcards: [expression],
//                    replicationPairs: [{id, destinationClient, source, sourceGuid,
//                                        destinationGuid, destination, state}],
//                    interfacePairs: [{pair, selector, first, second}],
//                    systemState: [{name, id, value, text1, text2, pairs: [{id, name}]}]}
//   properties      {kind, id, table, name, type, value}; kind is one of "domain", "client",
//                   "clientGroup", "clientAppType", "instance", "backupSet", "subclient"
//   globalParams    {name, value}
//   appProperties   {id1, id2, value}
//   preparedCache   {jobId, requestId, responseId, request, response}; the ids are numbers or
//                   "0x..." strings, request and response hex strings of the encoded bytes
//   providers       {id, name, description, type, disabled, value}
//   clouds          {id, name, type, clients: [{client, accessNode}]} (no accessNode: none)
//   domainClients   {domain, client, value1, value2, value3}: a client listed in a domain
//   asmInstances    instance ids: the instances that are ASM instances
//   appIds          {id, number1 ... number8, text0, text1, text2, option, archiveGroup,
//                    incrArchiveGroup}; id is the application id's number 0
//   subclientSettings {subclient, backupHost, referenceCopies: [subclient id],
//                    pairData: [{pair, selector, text}]}: a subclient's settings beyond the
//                    entity tree; backupHost is a client (none: the subclient's own), a pair a
//                    replication pair of the subclient's backup set
//   fileTypeExtensions {fileType, extensions}
//   advisoryTypes   {id, name, description}
//   sourceAdvisories {source, id, type, title}: advisories a source published, in its order
//   clientAdvisories {client, id, type, title, state}: an advisory that applies to a client;
//                   state 1 enabled (the default), 2 disabled, 3 acknowledged
//   logMonitoringParams {entity, type, name, value}
//   alerts          {time, clientId, clientName, severity, type, text, acknowledgedAt,
//                   acknowledgedBy}: an alert as received from an XML alert list at `time`
//                   (seconds since 1970-01-01 UTC); clientId 0 or a client; severity 0 to 4;
//                   acknowledgedAt 0 (the default) leaves it unacknowledged
//   snapshots       {id, f1, f3 ... f15}: a snapshot record; id is its F2 (not 0)
//   mailboxDelegates {id, g1 ... g6}: a mailbox delegate; id is its G7 (not 0)
//
// Ids, names and the references (appType, client, instance, pair, defaultSubclient, ...) are
// required; every other member has a default: 0, "", false or an empty list. A guid left out
// is no guid. An instance names its client and application type; the pair must be listed under
// that client's applications. Numbers are whole JSON numbers (unsigned where the field is).
// Unknown members are errors, so that a misspelt member is not silently dropped.
//
// Loading is all or nothing: the first failure rolls everything back and is returned with its
// code (kStoreErrInvalidArgument for a malformed entry, kStoreErrConflict for a duplicate,
// kStoreErrNotFound for a reference to nothing) and a text naming the file and the entry, as
// in "demo.json: backupSets[2].stores[0]: ...".
#pragma once

#include <string>
#include <string_view>

#include "platform/base/CLmError.h"
#include "server/store/Store.h"

namespace appmgr::server {

// Reads the file at `path` and loads it. A file that cannot be read is kKpErrNotFound or
// kKpErrIo.
CLmError LoadFixtureFile(Store& store, const std::string& path);

// Loads fixture text; `source` names it in errors.
CLmError LoadFixtureText(Store& store, std::string_view text, const std::string& source);

}  // namespace appmgr::server
