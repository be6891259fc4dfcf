#include "data/jet/catalog/system_tables.h"

#include "data/jet/format/header.h"

namespace rdv::jet {

Binary EncryptedSid(uint32_t sid_key, Bytes sid) {
  Binary bytes(sid.begin(), sid.end());
  ApplySidKey(sid_key, bytes);
  return bytes;
}

Binary DecryptedSid(uint32_t sid_key, Bytes stored) {
  return EncryptedSid(sid_key, stored);
}

std::vector<Assignment> ObjectRow(const ObjectFields& object) {
  return {{kObjectId, object.id},
          {kObjectParent, object.parent},
          {kObjectName, object.name},
          {kObjectType, object.type},
          {kObjectCreated, DateTime{object.date}},
          {kObjectUpdated, DateTime{object.date}},
          {kObjectOwner, object.owner},
          {kObjectFlags, object.flags}};
}

std::vector<Assignment> PermissionRow(int32_t object, const Binary& sid, int32_t rights,
                                      bool inheritable) {
  return {{kPermissionObject, object},
          {kPermissionSid, sid},
          {kPermissionRights, rights},
          {kPermissionInheritable, inheritable}};
}

}  // namespace rdv::jet
