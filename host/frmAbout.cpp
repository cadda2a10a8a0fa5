#include "host/frmAbout.h"

namespace wxl::host {

void frmAbout::Form_Load() {
    txtAbout.Text =
        "Version 1.1\n"
        "\n"
        "Credits\n"
        "Written by the wxl developers.\n"
        "\n"
        "Citation\n"
        "The wxl developers (2026). WXL Tools: home-range analysis of animal tracking data. Version 1.1.\n"
        "\n"
        "The methods:\n"
        "Silverman, B. W. (1986). Density Estimation for Statistics and Data Analysis. Chapman and Hall, London.\n"
        "Worton, B. J. (1989). Kernel methods for estimating the utilization distribution in home-range studies. "
        "Ecology 70, 164-168.\n"
        "\n"
        "Disclaimer\n"
        "This program is free software under the terms of the GNU General Public License. It is distributed in the "
        "hope that it will be useful, but without any warranty; without even the implied warranty of "
        "merchantability or fitness for a particular purpose. Check results before you rely on them.\n";
}

}  // namespace wxl::host
