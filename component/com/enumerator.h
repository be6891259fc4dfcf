// Enumeration objects over a fixed list of items.
#pragma once

#include <algorithm>
#include <vector>

#include "component/com/boundary.h"
#include "component/com/com_pointer.h"
#include "component/com/module.h"

namespace rdv {

// `Interface` is one of the IEnum... interfaces over `Item`. `Item` is copied by `Give`, which adds
// the references that the receiver is to release.
template <class Interface, class Item, void (*Give)(const Item&, Item&)>
class Enumerator final : public Interface {
 public:
  // `kept` is held for as long as the enumeration: what the items belong to.
  static HRESULT Create(REFIID iid, std::vector<Item> items, IUnknown* kept, Interface** result) {
    if (!result) return E_POINTER;
    *result = nullptr;
    return AtBoundary([&] {
      *result = new Enumerator(iid, std::move(items), kept, 0);
      return S_OK;
    });
  }

  STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
    if (!object) return E_POINTER;
    const bool known = iid == IID_IUnknown || iid == iid_;
    *object = known ? static_cast<Interface*>(this) : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  STDMETHODIMP Next(ULONG count, Item* items, ULONG* fetched) override {
    if (!items || (!fetched && count != 1)) return E_POINTER;
    const size_t given = std::min<size_t>(count, items_.size() - position_);
    for (size_t index = 0; index < given; ++index) Give(items_[position_ + index], items[index]);
    position_ += given;
    if (fetched) *fetched = static_cast<ULONG>(given);
    return given == count ? S_OK : S_FALSE;
  }
  STDMETHODIMP Skip(ULONG count) override {
    const size_t skipped = std::min<size_t>(count, items_.size() - position_);
    position_ += skipped;
    return skipped == count ? S_OK : S_FALSE;
  }
  STDMETHODIMP Reset() override {
    position_ = 0;
    return S_OK;
  }
  STDMETHODIMP Clone(Interface** copy) override {
    if (!copy) return E_POINTER;
    *copy = nullptr;
    return AtBoundary([&] {
      std::vector<Item> items(items_.size());
      for (size_t index = 0; index < items.size(); ++index) Give(items_[index], items[index]);
      *copy = new Enumerator(iid_, std::move(items), kept_.Get(), position_);
      return S_OK;
    });
  }

 private:
  Enumerator(REFIID iid, std::vector<Item> items, IUnknown* kept, size_t position)
      : iid_(iid), items_(std::move(items)), kept_(kept), position_(position) {}
  ~Enumerator() {
    for (Item& item : items_) Drop(item);
  }
  static void Drop(CONNECTDATA& item) { item.pUnk->Release(); }
  static void Drop(IConnectionPoint*& item) { item->Release(); }
  static void Drop(OLEVERB& item) { CoTaskMemFree(item.lpszVerbName); }
  static void Drop(FORMATETC& /*item*/) {}

  ULONG references_ = 1;
  const IID iid_;
  std::vector<Item> items_;
  ComPointer<IUnknown> kept_;
  size_t position_;
  ModuleLock lock_;
};

}  // namespace rdv
