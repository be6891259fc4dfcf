// What stands in the engine's own tables: their columns by number, the users and the bits that
// their rows speak of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "data/jet/format/bytes.h"
#include "data/jet/format/schema.h"

namespace rdv::jet {

inline constexpr TextView kObjectsName = u"MSysObjects";
inline constexpr TextView kAcesName = u"MSysACEs";
inline constexpr TextView kQueriesName = u"MSysQueries";
inline constexpr TextView kRelationshipsName = u"MSysRelationships";
inline constexpr TextView kDatabaseName = u"MSysDb";  // an object, no table

// MSysObjects.
inline constexpr size_t kObjectId = 0;
inline constexpr size_t kObjectParent = 1;
inline constexpr size_t kObjectName = 2;
inline constexpr size_t kObjectType = 3;
inline constexpr size_t kObjectCreated = 4;
inline constexpr size_t kObjectUpdated = 5;
inline constexpr size_t kObjectOwner = 6;
inline constexpr size_t kObjectFlags = 7;
inline constexpr size_t kObjectProperties = 14;

// MSysACEs.
inline constexpr size_t kPermissionObject = 0;
inline constexpr size_t kPermissionSid = 1;
inline constexpr size_t kPermissionRights = 2;
inline constexpr size_t kPermissionInheritable = 3;

// MSysRelationships: a row for each pair of columns.
inline constexpr size_t kRelationName = 0;
inline constexpr size_t kRelationRules = 1;
inline constexpr size_t kRelationPairs = 2;
inline constexpr size_t kRelationPair = 3;
inline constexpr size_t kRelationTable = 4;
inline constexpr size_t kRelationColumn = 5;
inline constexpr size_t kRelationReferencedTable = 6;
inline constexpr size_t kRelationReferencedColumn = 7;

// MSysRelationships.grbit.
inline constexpr uint32_t kRelationOneToOne = 0x00000001;
inline constexpr uint32_t kRelationNotEnforced = 0x00000002;
inline constexpr uint32_t kRelationCascadeUpdates = 0x00000100;
inline constexpr uint32_t kRelationCascadeDeletes = 0x00001000;
inline constexpr uint32_t kRelationLeftJoin = 0x01000000;
inline constexpr uint32_t kRelationRightJoin = 0x02000000;

// Security identifiers of users and groups, before they are encrypted.
inline constexpr uint8_t kUsersSid[] = {0x02, 0x01};
inline constexpr uint8_t kEngineSid[] = {0x02, 0x03};
inline constexpr uint8_t kCreatorSid[] = {0x02, 0x04};  // whoever makes an object
inline constexpr uint8_t kAdminSid[] = {0x03, 0x01};  // the one user of a file without a workgroup

// As a file with this key stores it, and back.
Binary EncryptedSid(uint32_t sid_key, Bytes sid);
Binary DecryptedSid(uint32_t sid_key, Bytes stored);

// A row of MSysObjects.
struct ObjectFields {
  int32_t id = 0;
  int32_t parent = 0;
  int16_t type = 0;
  Text name;
  double date = 0;  // of its making and of its last change
  Binary owner;     // encrypted
  int32_t flags = 0;
};
std::vector<Assignment> ObjectRow(const ObjectFields& object);

// A row of MSysACEs; `sid` is encrypted.
std::vector<Assignment> PermissionRow(int32_t object, const Binary& sid, int32_t rights,
                                      bool inheritable);

}  // namespace rdv::jet
