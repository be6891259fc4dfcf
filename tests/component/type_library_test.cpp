// The type library as compiled hosts read it.
#include <gtest/gtest.h>

#include "component/com/identifiers.h"
#include "tests/component/support/library.h"

namespace rdv::test {
namespace {

constexpr TYPEFLAGS kDual = TYPEFLAG_FDUAL;

class TypeLibrary : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(LoadTypeLibEx(Library::Path().c_str(), REGKIND_NONE, library_.Receive()), S_OK);
  }

  ComPointer<ITypeInfo> Type(const wchar_t* name) {
    ComPointer<ITypeInfo> found;
    for (UINT index = 0; index < library_->GetTypeInfoCount(); ++index) {
      BSTR each = nullptr;
      library_->GetDocumentation(static_cast<INT>(index), &each, nullptr, nullptr, nullptr);
      const bool same = std::wstring_view(each) == name;
      SysFreeString(each);
      if (same) library_->GetTypeInfo(index, found.Receive());
    }
    EXPECT_TRUE(found) << "no such type";
    return found;
  }

  static TYPEATTR Attributes(ITypeInfo* type) {
    TYPEATTR* attributes = nullptr;
    EXPECT_EQ(type->GetTypeAttr(&attributes), S_OK);
    const TYPEATTR copy = *attributes;
    type->ReleaseTypeAttr(attributes);
    return copy;
  }

  struct Member {
    std::wstring name;
    std::wstring help;
    DISPID id;
    INVOKEKIND kind;
    SHORT table_offset;
    std::vector<VARTYPE> arguments;
    VARTYPE result;  // of the function itself or of its last, returned, argument
  };

  // Those that the type itself declares.
  static std::vector<Member> Members(ITypeInfo* type) {
    std::vector<Member> members;
    for (UINT index = 0; index < Attributes(type).cFuncs; ++index) {
      FUNCDESC* function = nullptr;
      if (type->GetFuncDesc(index, &function) != S_OK) break;
      Member member = {L"",
                       L"",
                       function->memid,
                       function->invkind,
                       function->oVft,
                       {},
                       function->elemdescFunc.tdesc.vt};
      for (SHORT at = 0; at < function->cParams; ++at) {
        const ELEMDESC& argument = function->lprgelemdescParam[at];
        const bool returned = (argument.paramdesc.wParamFlags & PARAMFLAG_FRETVAL) != 0;
        const VARTYPE type_of =
            argument.tdesc.vt == VT_PTR ? argument.tdesc.lptdesc->vt : argument.tdesc.vt;
        if (returned) {
          member.result = type_of;
        } else {
          member.arguments.push_back(type_of);
        }
      }
      BSTR name = nullptr;
      BSTR help = nullptr;
      type->GetDocumentation(function->memid, &name, &help, nullptr, nullptr);
      member.name = name ? name : L"";
      member.help = help ? help : L"";
      SysFreeString(name);
      SysFreeString(help);
      type->ReleaseFuncDesc(function);
      members.push_back(std::move(member));
    }
    return members;
  }

  // A dual interface, seen as its method table.
  ComPointer<ITypeInfo> Table(const wchar_t* name) {
    const auto type = Type(name);
    ComPointer<ITypeInfo> table;
    HREFTYPE reference = 0;
    if (Attributes(type.Get()).typekind == TKIND_INTERFACE) return type;
    EXPECT_EQ(type->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference), S_OK);
    EXPECT_EQ(type->GetRefTypeInfo(reference, table.Receive()), S_OK);
    return table;
  }

  ComPointer<ITypeLib> library_;
};

TEST_F(TypeLibrary, HasItsNameAndVersion) {
  BSTR name = nullptr;
  ASSERT_EQ(library_->GetDocumentation(-1, &name, nullptr, nullptr, nullptr), S_OK);
  EXPECT_STREQ(name, L"TLV_RDV_Line_Config");
  SysFreeString(name);
  TLIBATTR* attributes = nullptr;
  ASSERT_EQ(library_->GetLibAttr(&attributes), S_OK);
  EXPECT_EQ(attributes->guid, kTypeLibraryId);
  EXPECT_EQ(attributes->wMajorVerNum, kTypeLibraryMajor);
  EXPECT_EQ(attributes->wMinorVerNum, kTypeLibraryMinor);
  library_->ReleaseTLibAttr(attributes);
}

TEST_F(TypeLibrary, HoldsTheFiveTypes) {
  EXPECT_EQ(library_->GetTypeInfoCount(), 5u);
}

TEST_F(TypeLibrary, TheControlClassIsAControlWithItsInterfaceAndEvents) {
  const auto control = Type(L"ucRDVLineConfig");
  const TYPEATTR attributes = Attributes(control.Get());
  EXPECT_EQ(attributes.typekind, TKIND_COCLASS);
  EXPECT_EQ(attributes.guid, kLineConfigClassId);
  EXPECT_TRUE(attributes.wTypeFlags & TYPEFLAG_FCONTROL);
  EXPECT_TRUE(attributes.wTypeFlags & TYPEFLAG_FCANCREATE);
  ASSERT_EQ(attributes.cImplTypes, 2);
  const std::pair<int, IID> expected[] = {
      {IMPLTYPEFLAG_FDEFAULT, kLineConfigInterfaceId},
      {IMPLTYPEFLAG_FDEFAULT | IMPLTYPEFLAG_FSOURCE, kLineConfigEventsId}};
  for (UINT index = 0; index < 2; ++index) {
    INT flags = 0;
    HREFTYPE reference = 0;
    ComPointer<ITypeInfo> interface_type;
    ASSERT_EQ(control->GetImplTypeFlags(index, &flags), S_OK);
    ASSERT_EQ(control->GetRefTypeOfImplType(index, &reference), S_OK);
    ASSERT_EQ(control->GetRefTypeInfo(reference, interface_type.Receive()), S_OK);
    EXPECT_EQ(flags, expected[index].first);
    EXPECT_EQ(Attributes(interface_type.Get()).guid, expected[index].second);
  }
}

TEST_F(TypeLibrary, TheRulesClassCannotBeCreated) {
  const auto rules = Type(L"Business_Rules");
  const TYPEATTR attributes = Attributes(rules.Get());
  EXPECT_EQ(attributes.typekind, TKIND_COCLASS);
  EXPECT_FALSE(attributes.wTypeFlags & TYPEFLAG_FCANCREATE);
  EXPECT_EQ(attributes.cImplTypes, 1);
}

TEST_F(TypeLibrary, TheControlsMethodsHaveTheirTypes) {
  EXPECT_TRUE(Attributes(Type(L"_ucRDVLineConfig").Get()).wTypeFlags & kDual);
  const auto members = Members(Table(L"_ucRDVLineConfig").Get());
  ASSERT_EQ(members.size(), 2u);
  EXPECT_EQ(members[0].name, L"ShowControl");
  EXPECT_EQ(members[0].arguments, std::vector<VARTYPE>{VT_I2});
  EXPECT_EQ(members[0].result, VT_BOOL);
  EXPECT_EQ(members[1].name, L"AssignIndextoDefaultBox");
  EXPECT_EQ(members[1].arguments, (std::vector<VARTYPE>{VT_I2, VT_I2}));
  EXPECT_EQ(members[1].result, VT_VARIANT);
  for (size_t index = 0; index < members.size(); ++index) {
    EXPECT_EQ(members[index].kind, INVOKE_FUNC);
    EXPECT_FALSE(members[index].help.empty());
    // After the seven methods of a dispatch interface.
    EXPECT_EQ(members[index].table_offset, static_cast<SHORT>((7 + index) * sizeof(void*)));
  }
}

TEST_F(TypeLibrary, TheEventIsNumberOneWithoutParameters) {
  const auto events = Type(L"__ucRDVLineConfig");
  EXPECT_EQ(Attributes(events.Get()).typekind, TKIND_DISPATCH);
  EXPECT_EQ(Attributes(events.Get()).guid, kLineConfigEventsId);
  const auto members = Members(events.Get());
  ASSERT_EQ(members.size(), 1u);
  EXPECT_EQ(members[0].name, L"RemoveME");
  EXPECT_EQ(members[0].id, kRemoveMeEvent);
  EXPECT_TRUE(members[0].arguments.empty());
  EXPECT_EQ(members[0].result, VT_VOID);
  EXPECT_FALSE(members[0].help.empty());
}

TEST_F(TypeLibrary, ThePropertiesHaveTheirNumbersAndTypes) {
  EXPECT_TRUE(Attributes(Type(L"_Business_Rules").Get()).wTypeFlags & kDual);
  const auto members = Members(Table(L"_Business_Rules").Get());
  ASSERT_EQ(members.size(), 4u);
  const struct {
    const wchar_t* name;
    DISPID id;
    INVOKEKIND kind;
  } expected[] = {{L"PartitionID", 0x68030000, INVOKE_PROPERTYGET},
                  {L"PartitionID", 0x68030000, INVOKE_PROPERTYPUT},
                  {L"ConfigID", 0x68030001, INVOKE_PROPERTYGET},
                  {L"ConfigID", 0x68030001, INVOKE_PROPERTYPUT}};
  for (size_t index = 0; index < 4; ++index) {
    EXPECT_EQ(members[index].name, expected[index].name);
    EXPECT_EQ(members[index].id, expected[index].id);
    EXPECT_EQ(members[index].kind, expected[index].kind);
    const bool reads = expected[index].kind == INVOKE_PROPERTYGET;
    const VARTYPE type = reads ? members[index].result : members[index].arguments.at(0);
    EXPECT_EQ(type, VT_I2);
    EXPECT_FALSE(members[index].help.empty());
  }
}

TEST_F(TypeLibrary, IsOfTheLibrarysWordSize) {
  TLIBATTR* attributes = nullptr;
  ASSERT_EQ(library_->GetLibAttr(&attributes), S_OK);
  EXPECT_EQ(attributes->syskind, sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32);
  library_->ReleaseTLibAttr(attributes);
}

TEST_F(TypeLibrary, TheTypesAndTheLibraryHaveHelpTexts) {
  for (INT index = -1; index < static_cast<INT>(library_->GetTypeInfoCount()); ++index) {
    BSTR help = nullptr;
    ASSERT_EQ(library_->GetDocumentation(index, nullptr, &help, nullptr, nullptr), S_OK);
    EXPECT_GT(SysStringLen(help), 0u) << index;
    SysFreeString(help);
  }
}

TEST_F(TypeLibrary, TheMembersHaveTheirNumbersAndPlaces) {
  const auto methods = Members(Table(L"_ucRDVLineConfig").Get());
  ASSERT_EQ(methods.size(), 2u);
  EXPECT_EQ(methods[0].id, 0x60030000);
  EXPECT_EQ(methods[1].id, 0x60030001);
  EXPECT_EQ(Attributes(Table(L"_ucRDVLineConfig").Get()).typekind, TKIND_INTERFACE);
  const auto properties = Members(Table(L"_Business_Rules").Get());
  EXPECT_EQ(Attributes(Table(L"_Business_Rules").Get()).typekind, TKIND_INTERFACE);
  for (size_t index = 0; index < properties.size(); ++index) {
    EXPECT_EQ(properties[index].table_offset, static_cast<SHORT>((7 + index) * sizeof(void*)));
  }
}

TEST_F(TypeLibrary, TheRulesClassHasItsDefaultInterfaceAndNoFactory) {
  const auto rules = Type(L"Business_Rules");
  INT flags = 0;
  HREFTYPE reference = 0;
  ComPointer<ITypeInfo> interface_type;
  ASSERT_EQ(rules->GetImplTypeFlags(0, &flags), S_OK);
  ASSERT_EQ(rules->GetRefTypeOfImplType(0, &reference), S_OK);
  ASSERT_EQ(rules->GetRefTypeInfo(reference, interface_type.Receive()), S_OK);
  EXPECT_EQ(flags, IMPLTYPEFLAG_FDEFAULT);
  EXPECT_EQ(Attributes(interface_type.Get()).guid, Attributes(Type(L"_Business_Rules").Get()).guid);
  const Library library;
  ComPointer<IClassFactory> factory;
  EXPECT_EQ(library.GetClassObject(Attributes(rules.Get()).guid, IID_IClassFactory,
                                   factory.ReceiveUntyped()),
            CLASS_E_CLASSNOTAVAILABLE);
}

}  // namespace
}  // namespace rdv::test
