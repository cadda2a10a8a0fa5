#include "form_fixture.h"
#include "platform/runtime_error.h"

#include <gmock/gmock.h>

namespace wxl::kde_tool {
namespace {

using testing::ElementsAre;

const platform::SpatialReference kDegrees{"WGS 84", "", "degree", 0.0, true};

/// The form over a map with a layer in degrees "gps", one in metres "utm", and a reprojection that only notes.
class ALayerInDegrees : public FormTest, public platform::IReprojection {
protected:
    ALayerInDegrees() {
        AddLayer("utm", {"WGS 84 / UTM zone 32N", "", "metre", 1.0, false});
        AddLayer("gps", kDegrees);
    }

    void AddLayer(const std::string& name, const platform::SpatialReference& reference) {
        auto features = std::make_shared<memory::MemoryFeatureClass>(
            platform::ShapeType::kPoint,
            std::vector<platform::Field>{{.Name = "Animal", .Type = platform::FieldType::kInteger},
                                         {.Name = "Age", .Type = platform::FieldType::kDouble}},
            reference);
        layers.push_back(std::make_shared<memory::MemoryFeatureLayer>(name, features));
        Map().AddLayer(memory::layer_of(layers.back()));
    }

    std::optional<platform::UtmTarget> Target(const platform::Layer&) override { return target; }

    std::string AddUtmCopy(const platform::Layer& layer, const platform::UtmTarget& wanted) override {
        if (fails) platform::Raise(platform::error_number::kDeviceIo, "The disk is full.");
        copied.push_back(layer.Name + " to " + wanted.Code());
        AddLayer("gps UTM", {"", "", "metre", 1.0, false});
        return "gps UTM";
    }

    void ChooseLayer(const std::string& name) {
        ASSERT_TRUE(aware.cmbPntL.Select(name));
        aware.cmbPntL_Click();
    }

    platform::Services WithReprojection() {
        platform::Services services = Services();
        services.Reprojection = this;
        return services;
    }

    std::optional<platform::UtmTarget> target = platform::UtmTarget{32, false, 32, 32};
    std::vector<std::string> copied;
    bool fails = false;
    frmKDE aware{WithReprojection(), geodata};
};

TEST_F(ALayerInDegrees, Gets_a_notice_and_others_get_none) {
    aware.Form_Load();
    EXPECT_EQ(aware.cmbPntL.Text(), "utm");
    EXPECT_EQ(aware.lblDegrees.Caption, "");
    EXPECT_FALSE(aware.btnReproject.Enabled);
    ChooseLayer("gps");
    EXPECT_EQ(
        aware.lblDegrees.Caption,
        "This layer is in degrees. Cell size, bandwidths and areas need metres or another unit of length. Its UTM "
        "zone is 32N (EPSG:32632).");
    EXPECT_TRUE(aware.btnReproject.Enabled);
    EXPECT_EQ(messages.Boxes().size(), 0U) << "no box";
    ChooseLayer("utm");
    EXPECT_EQ(aware.lblDegrees.Caption, "");
    EXPECT_FALSE(aware.btnReproject.Enabled);
}

TEST_F(ALayerInDegrees, Is_told_when_it_reaches_over_several_zones) {
    target = platform::UtmTarget{33, true, 31, 35};
    aware.Form_Load();
    ChooseLayer("gps");
    EXPECT_EQ(
        aware.lblDegrees.Caption,
        "This layer is in degrees. Cell size, bandwidths and areas need metres or another unit of length. Its UTM "
        "zone is 33S (EPSG:32733). Its points reach from zone 31 to zone 35: far from zone 33 distances are "
        "distorted.");
}

TEST_F(ALayerInDegrees, Without_a_zone_has_no_button) {
    target.reset();
    aware.Form_Load();
    ChooseLayer("gps");
    EXPECT_EQ(
        aware.lblDegrees.Caption,
        "This layer is in degrees. Cell size, bandwidths and areas need metres or another unit of length. It has no "
        "UTM zone (no points, or too close to a pole): please reproject it to a coordinate system of your choice.");
    EXPECT_FALSE(aware.btnReproject.Enabled);
    aware.btnReproject_Click();
    EXPECT_THAT(copied, ElementsAre());
}

TEST_F(ALayerInDegrees, Is_replaced_in_the_list_by_its_copy_with_the_same_field) {
    aware.Form_Load();
    ChooseLayer("gps");
    ASSERT_TRUE(aware.cmbUIDFLD.Select("Age"));
    aware.chkUseSel.Value = 1;
    aware.btnReproject_Click();
    EXPECT_THAT(copied, ElementsAre("gps to EPSG:32632"));
    EXPECT_EQ(aware.cmbPntL.Text(), "gps UTM");
    EXPECT_THAT(aware.cmbPntL.Items, ElementsAre("utm", "gps", "gps UTM"));
    EXPECT_EQ(aware.cmbUIDFLD.Text(), "Age");
    EXPECT_EQ(aware.chkUseSel.Value, 1);
    EXPECT_EQ(aware.lblDegrees.Caption, "");
    EXPECT_EQ(aware.txtStatus.Text, "Reprojected to UTM zone 32N");
}

TEST_F(ALayerInDegrees, Stays_chosen_when_its_copy_cannot_be_written) {
    fails = true;
    aware.Form_Load();
    ChooseLayer("gps");
    aware.btnReproject_Click();
    EXPECT_EQ(messages.Last().Text, "Error: The disk is full.");
    EXPECT_EQ(aware.cmbPntL.Text(), "gps");
    EXPECT_TRUE(aware.btnReproject.Enabled);
}

TEST_F(ALayerInDegrees, Goes_without_a_notice_where_there_is_no_map_to_add_to) {
    form.Form_Load();
    ASSERT_TRUE(form.cmbPntL.Select("gps"));
    form.cmbPntL_Click();
    EXPECT_EQ(form.lblDegrees.Caption, "");
}

TEST(UtmTarget, Names_its_coordinate_system) {
    EXPECT_EQ((platform::UtmTarget{7, false, 7, 7}.Code()), "EPSG:32607");
    EXPECT_EQ((platform::UtmTarget{60, true, 60, 60}.Code()), "EPSG:32760");
    EXPECT_EQ((platform::UtmTarget{60, true, 60, 60}.Name()), "60S");
    EXPECT_FALSE((platform::UtmTarget{60, true, 60, 60}.SpansZones()));
    EXPECT_TRUE((platform::UtmTarget{60, true, 60, 1}.SpansZones()));
}

}  // namespace
}  // namespace wxl::kde_tool
