// The dialog about the program.
#include "core/messages.h"
#include "ui/controls/form.h"
#include "ui/frame/about_resource.h"
#include "ui/frame/frame.h"

namespace vexa {

void ShowAbout(Application& app) {
  FormActions actions;
  actions.open = [](Form& form) {
    form.SetText(IDC_ABOUT_PROJECT, Format("Project ID - %s", kProjectId));
    form.SetText(IDC_ABOUT_VERSION,
                 Format("Version - %d.%d.%d", kVersionMajor, kVersionMinor, kVersionBuild));
    form.SetText(IDC_ABOUT_DATE, Format("Build Date - %s", __DATE__));
    form.SetText(IDC_ABOUT_TIME, Format("Build Time - %s", __TIME__));
  };
  RunForm(app, IDD_ABOUT, actions);
}

}  // namespace vexa
