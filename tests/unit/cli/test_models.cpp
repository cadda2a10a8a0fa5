#include "tests/unit/cli/layer_files.h"
#include "tests/unit/cli/timed_rows.h"

#include <cmath>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace wxl::cli {
namespace {

using Json = nlohmann::ordered_json;
using tests::ScratchFolder;

Ran run_models_on(const std::string& layer, std::vector<std::string> more) {
    std::vector<std::string> arguments{"models", layer, "--id-field", "animal", "--time-field", "Date,Time1"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return run_wxl(arguments);
}

TEST(Models, Json_of_fourteen_fixes) {
    ScratchFolder folder;
    const Ran ran = run_models_on(make_layer(folder, fourteen_rows("a")), {"--json"});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_EQ(ran.Err,
              "a: The data are few: the record is worth 3.28 effective fixes.\n"
              "a: The variogram does not level off: within this record positions still drift apart.\n");
    const Json json = Json::parse(ran.Out);
    ASSERT_EQ(json.size(), 1U);
    const Json& animal = json[0];
    EXPECT_EQ(animal["id"], "a");
    EXPECT_EQ(animal["n"], 14);
    EXPECT_EQ(animal["n_used"], 14);
    EXPECT_EQ(animal["first"], "2020-01-01T00:00:00Z");
    EXPECT_EQ(animal["last"], "2020-01-02T02:00:00Z");
    EXPECT_EQ(animal["chosen"], "OU isotropic");
    ASSERT_EQ(animal["models"].size(), 8U);
    const Json& best = animal["models"][0];
    EXPECT_EQ(best["name"], "OU");
    EXPECT_EQ(best["isotropic"], true);
    EXPECT_NEAR(best["loglik"].get<double>(), -196.762131865, 1e-8);
    EXPECT_NEAR(best["aicc"].get<double>(), 402.978809, 1e-6);
    EXPECT_EQ(best["delta_aicc"], 0.0);
    EXPECT_NEAR(best["tau_position_s"].get<double>(), 22123.2171, 1e-3);
    EXPECT_TRUE(best["tau_velocity_s"].is_null());
    EXPECT_NEAR(best["sigma_major"].get<double>(), 397.936821, 1e-5);
    EXPECT_NEAR(best["dof_area"].get<double>(), 3.282965, 1e-6);
    EXPECT_NEAR(best["area95"].get<double>(), 2980651, 0.5);
    EXPECT_NEAR(best["area95_low"].get<double>(), 675667, 0.5);
    EXPECT_NEAR(best["area95_high"].get<double>(), 6963630, 0.5);
    EXPECT_EQ(best["status"], "fitted by pHREML");
    // 50-digit matrices; the deviation by a central difference of 0.1 %
    EXPECT_NEAR(best["tau_position_sd_s"].get<double>(), 14649.89, 0.02);
    EXPECT_NEAR(best["dof_mean"].get<double>(), 3.0969486, 1e-6);
    EXPECT_TRUE(best["speed"].is_null());
    EXPECT_EQ(animal["models"][7]["status"], "collapsed to OU");
    EXPECT_TRUE(animal["models"][7]["aicc"].is_null());
}

TEST(Models, Given_scales_have_their_likelihoods) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder,
                                         "a,500000,5800000,2020-01-01T00:00:00Z\n"
                                         "a,500120,5800040,2020-01-01T01:00:00Z\n"
                                         "a,500180,5800150,2020-01-01T02:00:00Z\n"
                                         "a,500060,5800210,2020-01-01T04:00:00Z\n"
                                         "a,499910,5800030,2020-01-01T07:00:00Z\n");
    const Json ou = Json::parse(run_models_on(layer, {"--json", "--at", "OU:10800"}).Out)[0];
    EXPECT_NEAR(ou["loglik_ml"].get<double>(), -57.9569510220, 1e-9);
    EXPECT_NEAR(ou["loglik_reml"].get<double>(), -49.4661342511, 1e-9);
    EXPECT_NEAR(ou["mean"][0].get<double>(), 500010.089952073568, 1e-8);
    EXPECT_NEAR(ou["mean"][1].get<double>(), 5800069.689555795698, 1e-8);
    EXPECT_NEAR(ou["covariance"][0].get<double>(), 63497.557625933 / 4, 1e-7);
    EXPECT_NEAR(ou["covariance"][1].get<double>(), 32094.049538067 / 4, 1e-7);
    EXPECT_NEAR(ou["covariance_ml"][2].get<double>(), 49878.673082317 / 5, 1e-7);
    const Json ouf = Json::parse(run_models_on(layer, {"--json", "--at", "OUF:isotropic:10800,1800"}).Out)[0];
    EXPECT_NEAR(ouf["loglik_ml"].get<double>(), -58.5548830975, 1e-9);
    EXPECT_NEAR(ouf["loglik_reml"].get<double>(), -49.6129643326, 1e-9);
    EXPECT_EQ(ouf["covariance"][1], 0.0);
    EXPECT_EQ(ouf["models"][0]["status"], "given");
    const Json iid = Json::parse(run_models_on(layer, {"--json", "--at", "IID:isotropic"}).Out)[0];
    EXPECT_NEAR(iid["loglik_ml"].get<double>(), -58.8715338501, 1e-9);
}

TEST(Models, A_wrong_model_is_a_wrong_call) {
    const Ran ran = run_wxl({"models", "none.shp", "--id-field", "a", "--time-field", "t", "--at", "OUF:5"});
    EXPECT_EQ(ran.Code, 2);
    EXPECT_EQ(ran.Err,
              "wxl: --at: \"OUF:5\" is no model like IID, OU:TAU, OUf:TAU or OUF:TAU1,TAU2 with time scales in seconds "
              "(TAU2 below TAU1), with \":isotropic\" behind the name for a round range\n");
}

TEST(Models, Table_and_csv_and_plots) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a") + "b,500000,5800000,2020-01-01\n");
    const std::string csv = (folder / "models.csv").string();
    const std::string plots = (folder / "plots").string();
    const Ran ran = run_models_on(layer, {"--csv", csv, "--plot", plots});
    EXPECT_EQ(ran.Code, 0);
    EXPECT_NE(
        ran.Out.find("a: 14 of 14 fixes, 2020-01-01T00:00:00Z to 2020-01-02T02:00:00Z\n"
                     "model            dAICc  tau position  tau velocity      speed    DOF    km2     low   high  "
                     "          status\n"
                     "OU isotropic     0.000        6.15 h           N/A        N/A  3.283  2.981  0.6757  6.964  "
                     "fitted by pHREML\n"),
        std::string::npos)
        << ran.Out;
    EXPECT_NE(ran.Out.find("b: 1 of 1 fixes, 2020-01-01T00:00:00Z to 2020-01-01T00:00:00Z\n"
                           "There is 1 fix of different times: at least 3 are needed.\n"),
              std::string::npos)
        << ran.Out;
    EXPECT_EQ(names_in(plots), (std::set<std::string>{"1_variogram.svg", "2_variogram.svg"}));
    const std::string table = read_file(csv);
    EXPECT_EQ(table.substr(0, table.find('\n')),
              "id,n,n_used,first,last,chosen,model,isotropic,loglik,aicc,delta_aicc,tau_position_s,tau_velocity_s,"
              "sigma_major,sigma_minor,angle,speed,dof_area,area95,area95_low,area95_high,status");
    EXPECT_EQ(run_models_on(layer, {"--csv", csv}).Code, 1);
}

TEST(Models, Degenerate_animals_have_a_sentence_each) {
    ScratchFolder folder;
    std::string rows;
    for (int i = 0; i < 6; ++i) {
        rows += fmt::format("still,500000,5800000,2020-01-0{}\n", i + 1);
        rows += fmt::format("line,{},5800000,2020-01-0{}\n", 500000 + i * i, i + 1);
        rows += fmt::format("twice,{},{},2020-01-0{}\n", 500000 + i, 5800000 + i * i, i / 2 + 1);
    }
    rows += "timeless,500000,5800000,\n";
    const Ran ran = run_models_on(make_layer(folder, rows), {"--json"});
    EXPECT_EQ(ran.Code, 0);
    const Json json = Json::parse(ran.Out);
    ASSERT_EQ(json.size(), 4U);
    EXPECT_EQ(json[0]["chosen"], "OUf isotropic");  // the isotropic ones alone are fitted
    EXPECT_EQ(json[1]["verdict"], "All fixes lie at one place: the animal never moved.");
    EXPECT_EQ(json[1]["models"].size(), 0U);
    EXPECT_TRUE(json[2]["chosen"].is_null());
    EXPECT_EQ(json[2]["n"], 1);
    EXPECT_EQ(json[2]["n_used"], 0);
    EXPECT_EQ(json[2]["verdict"], "There are 0 fixes of different times: at least 3 are needed.");
    EXPECT_EQ(
        json[3]["verdict"],
        "3 fixes have the time of another fix at another place (the first: 2020-01-01T00:00:00Z): no model of movement "
        "has a likelihood. Remove "
        "duplicates in time first (wxl remove-duplicates --by time2), or name a field whose times tell them apart.");
    EXPECT_NE(ran.Err.find("timeless: 1 fix without a time left out\n"), std::string::npos) << ran.Err;
    EXPECT_NE(ran.Err.find("line: All fixes lie on one line: anisotropic models are out, isotropic ones hold.\n"),
              std::string::npos)
        << ran.Err;
}

TEST(Models, No_time_field_names_those_there_are) {
    ScratchFolder folder;
    const std::string layer = make_layer(folder, fourteen_rows("a"));
    const Ran ran = run_wxl({"models", layer, "--id-field", "animal", "--time-field", "when"});
    EXPECT_EQ(ran.Code, 1);
    EXPECT_EQ(ran.Err, "wxl: " + layer +
                           " has no field \"when\" for the time of its fixes; its fields are: animal, Time2, Date, "
                           "Time1\n");
}

}  // namespace
}  // namespace wxl::cli
