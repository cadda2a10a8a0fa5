#include "adapters/tracking/animal_column.h"

#include <algorithm>
#include <array>

namespace wxl::tracking {

namespace {

// Names without their punctuation and in small letters, the surest first: "location-long", "location.long",
// "location_long" and "locationLong" are all "locationlong".
constexpr std::array<std::string_view, 69> kIndividual = {"individuallocalidentifier",
                                                          "organismid",
                                                          "individualid",
                                                          "animalid",
                                                          "animalname",
                                                          "individualname",
                                                          "animal",
                                                          "individual",
                                                          "organismname",
                                                          "localidentifier",
                                                          "subject",
                                                          "subjectid",
                                                          "subjectname",
                                                          "animals",
                                                          "individu",
                                                          "tier",
                                                          "tierid",
                                                          "tiername",
                                                          "tiernummer",
                                                          "tiernr",
                                                          "individuum",
                                                          "djur",
                                                          "djurid",
                                                          "dyr",
                                                          "dyrid",
                                                          "dyrnavn",
                                                          "dier",
                                                          "dierid",
                                                          "diernaam",
                                                          "zwierze",
                                                          "zwierzeid",
                                                          "osobnik",
                                                          "zvire",
                                                          "elain",
                                                          "idanimal",
                                                          "nomanimal",
                                                          "extrasubjectname",
                                                          "животное",
                                                          "животные",
                                                          "особь",
                                                          "тварина",
                                                          "особина",
                                                          "животно",
                                                          "ζωο",
                                                          "ατομο",
                                                          "动物",
                                                          "動物",
                                                          "个体",
                                                          "個体",
                                                          "個體",
                                                          "개체",
                                                          "동물",
                                                          "hayvan",
                                                          "birey",
                                                          "allat",
                                                          "egyed",
                                                          "yksilo",
                                                          "jedinec",
                                                          "individuo",
                                                          "individ",
                                                          "refanimal",
                                                          "nomeanimal",
                                                          "nombredelanimal",
                                                          "nombreanimal",
                                                          "animale",
                                                          "nome",
                                                          "nom",
                                                          "nombre",
                                                          "name"};
constexpr std::array<std::string_view, 49> kDevice = {"taglocalidentifier",
                                                      "taglocal",
                                                      "tagid",
                                                      "collarid",
                                                      "collar",
                                                      "collarnumber",
                                                      "deviceid",
                                                      "devicename",
                                                      "device",
                                                      "deviceinfoserial",
                                                      "tagserialnumber",
                                                      "tagnumber",
                                                      "tagname",
                                                      "tag",
                                                      "platformid",
                                                      "platformidno",
                                                      "platform",
                                                      "ptt",
                                                      "pttid",
                                                      "pttno",
                                                      "deployid",
                                                      "deploymentid",
                                                      "deployment",
                                                      "trackid",
                                                      "trackname",
                                                      "track",
                                                      "transmitterid",
                                                      "transmitter",
                                                      "loggerid",
                                                      "logger",
                                                      "trackerid",
                                                      "tracker",
                                                      "unitid",
                                                      "unit",
                                                      "serialnumber",
                                                      "serial",
                                                      "imei",
                                                      "gpsid",
                                                      "ringnumber",
                                                      "uuid",
                                                      "collarserialnumber",
                                                      "motustagdepid",
                                                      "tagdeployid",
                                                      "motustagid",
                                                      "collarserial",
                                                      "collarsn",
                                                      "collarno",
                                                      "collarnr",

                                                      "ring"};
constexpr std::array<std::string_view, 5> kPlain = {"id", "ident", "identifier", "burst", "ref"};

// What may tell animals of the same name apart.
constexpr std::array<std::string_view, 2> kNumberOfAnimal = {"tagid", "id"};

// Kinds of animals that columns are called after.
constexpr std::array<std::string_view, 81> kKinds = {
    "wolf",     "wolves", "bear",      "fox",      "lynx",    "deer",     "elk",    "moose",   "caribou",
    "reindeer", "bison",  "buffalo",   "boar",     "cougar",  "puma",     "jaguar", "leopard", "lion",
    "tiger",    "cat",    "dog",       "coyote",   "otter",   "badger",   "beaver", "hare",    "rabbit",
    "squirrel", "bat",    "fisher",    "marten",   "ibex",    "chamois",  "isard",  "sheep",   "goat",
    "horse",    "zebra",  "elephant",  "rhino",    "giraffe", "antelope", "bird",   "stork",   "eagle",
    "hawk",     "falcon", "owl",       "gull",     "goose",   "duck",     "swan",   "crane",   "tern",
    "vulture",  "condor", "albatross", "penguin",  "fish",    "eel",      "salmon", "trout",   "shark",
    "whale",    "seal",   "turtle",    "tortoise", "snake",   "monkey",   "baboon", "动物",    "動物",
    "个体",     "個体",   "個體",      "개체",     "동물",    "животное", "особь",  "тварина", "особина"};

constexpr std::size_t kRowsThatTell = 5;

/// Whether the column can tell animals apart.
bool can_name(const ColumnProfile& profile, bool mayBeDistinct) {
    if (profile.IsEmpty()) return false;
    return mayBeDistinct || !profile.AllDistinct() || profile.Filled() < kRowsThatTell;
}

std::optional<std::size_t> first_of(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles,
                                    std::span<const std::string_view> names, bool mayBeDistinct) {
    for (const std::string_view name : names)
        for (std::size_t i = 0; i < header.Count(); ++i)
            if ((header.Bare(i) == name || header.BareAll(i) == name) && can_name(profiles[i], mayBeDistinct)) return i;
    return std::nullopt;
}

/// "wolf", "wolfid", "wolfname", "wolfnr", "fishno".
bool speaks_of_animal(std::string_view bare) {
    for (const std::string_view kind : kKinds) {
        if (!bare.starts_with(kind)) continue;
        const std::string_view rest = bare.substr(kind.size());
        constexpr std::array<std::string_view, 14> kEnds = {"",       "s",    "id",   "name", "nr",   "no", "num",
                                                            "number", "code", "番号", "编号", "編號", "名", "번호"};
        if (std::find(kEnds.begin(), kEnds.end(), rest) != kEnds.end()) return true;
    }
    return bare.starts_with("animal") || bare.starts_with("individual");
}

std::optional<std::size_t> animal_word(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles) {
    for (std::size_t i = 0; i < header.Count(); ++i) {
        const std::string& bare = header.Bare(i);
        const bool isTaxon = bare.find("taxon") != std::string::npos || bare.find("sex") != std::string::npos ||
                             bare.find("comment") != std::string::npos || bare.find("species") != std::string::npos;
        if (!isTaxon && speaks_of_animal(bare) && can_name(profiles[i], false)) return i;
    }
    return std::nullopt;
}

bool is_name(std::string_view bare) {
    return bare.ends_with("name") || bare == "nom" || bare == "nome" || bare == "nombre";
}

}  // namespace

std::optional<AnimalColumn> find_animal(const ColumnHeader& header, const std::vector<ColumnProfile>& profiles) {
    // A name of each row can be an individual's, once each; a number of each row is that of the row.
    auto found = first_of(header, profiles, kIndividual, false);
    if (!found) found = first_of(header, profiles, kDevice, false);
    if (!found) found = first_of(header, profiles, kPlain, false);
    if (!found) found = animal_word(header, profiles);
    if (!found) return std::nullopt;
    AnimalColumn column{*found, std::nullopt, false};
    if (is_name(header.Bare(*found)) && header.Bare(*found) != "devicename") {
        column.Number = header.FindFirst(kNumberOfAnimal);
        if (column.Number && profiles[*column.Number].AllDistinct() &&
            profiles[*column.Number].Filled() >= kRowsThatTell)
            column.Number.reset();
    }
    return column;
}

}  // namespace wxl::tracking
