// The controls of a dialog that shows several records at once.
#pragma once

#include "platform/text.h"
#include "ui/controls/form.h"
#include "view/common_form.h"

namespace vexa {

// A box of several records: in between when they differ, and so it may stay.
template <class Values>
void ShowFlag(const Form& form, int id, const CommonForm<Values>& common, bool Values::*flag,
              bool turned = false) {
  if (!common.Differs(flag)) return form.Check(id, common.form.*flag != turned);
  SendMessageW(form.Control(id), BM_SETSTYLE, BS_AUTO3STATE, TRUE);
  CheckDlgButton(form.window, id, BST_INDETERMINATE);
}
inline void ShowCode(const Form& form, int id, uint32_t code) {
  if (code != kNoCode) return form.Check(id, code != 0);
  SendMessageW(form.Control(id), BM_SETSTYLE, BS_AUTO3STATE, TRUE);
  CheckDlgButton(form.window, id, BST_INDETERMINATE);
}
inline bool InBetween(const Form& form, int id) {
  return IsDlgButtonChecked(form.window, id) == BST_INDETERMINATE;
}
template <class Values>
void TakeFlag(const Form& form, int id, CommonForm<Values>& common, bool Values::*flag, bool turned = false) {
  if (InBetween(form, id))
    common.differing.push_back(flag);
  else
    common.form.*flag = form.Checked(id) != turned;
}
inline uint32_t TakenCode(const Form& form, int id) {
  return InBetween(form, id) ? kNoCode : uint32_t{form.Checked(id)};
}

// "Carrier Information - 3 records"
inline void ShowCount(const Form& form, size_t records) {
  if (records > 1) SetText(form.window, WindowText(form.window) + Format(" - %zu records", records));
}

}  // namespace vexa
