// locale_ids.cpp - the locale identifier and the ANSI code page number of the process's locale.
//
// The locale name in force (LC_CTYPE, as set by the library's start from the environment) is read
// as language[_TERRITORY][.codeset][@modifier] and looked up in the one table of locale names below;
// the codeset (nl_langinfo(CODESET)) is looked up in the table of code pages beside it. Both tables
// are data of this port: they say which identifier the first platform gives the same locale.
#include "platform/locale_ids.h"

#include <langinfo.h>

#include <clocale>
#include <cstring>
#include <string_view>

namespace qz::os {
namespace {

constexpr uint32_t kLcidInvariant = 0x007F;       // the C and POSIX locales
constexpr uint32_t kLcidCustomUnspecified = 0x1000;  // a locale without an identifier

struct LocaleId {
  const char* name;  // language_TERRITORY, with @modifier where the modifier decides
  uint32_t lcid;     // the first platform's identifier of that locale
};

// For a language, the row of its default territory comes first: a name whose territory is not
// listed takes the language's first row.
constexpr LocaleId kLocaleIds[] = {
    {"af_ZA", 0x0436}, {"am_ET", 0x045E}, {"ar_SA", 0x0401}, {"ar_AE", 0x3801}, {"ar_BH", 0x3C01},
    {"ar_DZ", 0x1401}, {"ar_EG", 0x0C01}, {"ar_IQ", 0x0801}, {"ar_JO", 0x2C01}, {"ar_KW", 0x3401},
    {"ar_LB", 0x3001}, {"ar_LY", 0x1001}, {"ar_MA", 0x1801}, {"ar_OM", 0x2001}, {"ar_QA", 0x4001},
    {"ar_SY", 0x2801}, {"ar_TN", 0x1C01}, {"ar_YE", 0x2401}, {"as_IN", 0x044D}, {"az_AZ", 0x042C},
    {"be_BY", 0x0423}, {"bg_BG", 0x0402}, {"bn_IN", 0x0445}, {"bn_BD", 0x0845}, {"bo_CN", 0x0451},
    {"br_FR", 0x047E}, {"bs_BA", 0x141A}, {"ca_ES", 0x0403}, {"cs_CZ", 0x0405}, {"cy_GB", 0x0452},
    {"da_DK", 0x0406}, {"de_DE", 0x0407}, {"de_AT", 0x0C07}, {"de_CH", 0x0807}, {"de_LI", 0x1407},
    {"de_LU", 0x1007}, {"dv_MV", 0x0465}, {"el_GR", 0x0408}, {"en_US", 0x0409}, {"en_AU", 0x0C09},
    {"en_BZ", 0x2809}, {"en_CA", 0x1009}, {"en_GB", 0x0809}, {"en_HK", 0x3C09}, {"en_IE", 0x1809},
    {"en_IN", 0x4009}, {"en_JM", 0x2009}, {"en_MY", 0x4409}, {"en_NZ", 0x1409}, {"en_PH", 0x3409},
    {"en_SG", 0x4809}, {"en_TT", 0x2C09}, {"en_VI", 0x2409}, {"en_ZA", 0x1C09}, {"en_ZW", 0x3009},
    {"es_ES", 0x0C0A}, {"es_AR", 0x2C0A}, {"es_BO", 0x400A}, {"es_CL", 0x340A}, {"es_CO", 0x240A},
    {"es_CR", 0x140A}, {"es_DO", 0x1C0A}, {"es_EC", 0x300A}, {"es_GT", 0x100A}, {"es_HN", 0x480A},
    {"es_MX", 0x080A}, {"es_NI", 0x4C0A}, {"es_PA", 0x180A}, {"es_PE", 0x280A}, {"es_PR", 0x500A},
    {"es_PY", 0x3C0A}, {"es_SV", 0x440A}, {"es_US", 0x540A}, {"es_UY", 0x380A}, {"es_VE", 0x200A},
    {"et_EE", 0x0425}, {"eu_ES", 0x042D}, {"fa_IR", 0x0429}, {"fi_FI", 0x040B}, {"fo_FO", 0x0438},
    {"fr_FR", 0x040C}, {"fr_BE", 0x080C}, {"fr_CA", 0x0C0C}, {"fr_CH", 0x100C}, {"fr_LU", 0x140C},
    {"fr_MC", 0x180C}, {"fy_NL", 0x0462}, {"ga_IE", 0x083C}, {"gd_GB", 0x0491}, {"gl_ES", 0x0456},
    {"gu_IN", 0x0447}, {"ha_NG", 0x0468}, {"he_IL", 0x040D}, {"hi_IN", 0x0439}, {"hr_HR", 0x041A},
    {"hr_BA", 0x101A}, {"hu_HU", 0x040E}, {"hy_AM", 0x042B}, {"id_ID", 0x0421}, {"ig_NG", 0x0470},
    {"is_IS", 0x040F}, {"it_IT", 0x0410}, {"it_CH", 0x0810}, {"iu_CA", 0x085D}, {"ja_JP", 0x0411},
    {"ka_GE", 0x0437}, {"kk_KZ", 0x043F}, {"kl_GL", 0x046F}, {"km_KH", 0x0453}, {"kn_IN", 0x044B},
    {"ko_KR", 0x0412}, {"kok_IN", 0x0457}, {"ks_IN", 0x0460}, {"ky_KG", 0x0440}, {"lb_LU", 0x046E},
    {"lo_LA", 0x0454}, {"lt_LT", 0x0427}, {"lv_LV", 0x0426}, {"mi_NZ", 0x0481}, {"mk_MK", 0x042F},
    {"ml_IN", 0x044C}, {"mn_MN", 0x0450}, {"mni_IN", 0x0458}, {"mr_IN", 0x044E}, {"ms_MY", 0x043E},
    {"ms_BN", 0x083E}, {"mt_MT", 0x043A}, {"nb_NO", 0x0414}, {"ne_NP", 0x0461}, {"ne_IN", 0x0861},
    {"nl_NL", 0x0413}, {"nl_BE", 0x0813}, {"nn_NO", 0x0814}, {"no_NO", 0x0414}, {"or_IN", 0x0448},
    {"pa_IN", 0x0446}, {"pl_PL", 0x0415}, {"ps_AF", 0x0463}, {"pt_BR", 0x0416}, {"pt_PT", 0x0816},
    {"rm_CH", 0x0417}, {"ro_RO", 0x0418}, {"ru_RU", 0x0419}, {"sa_IN", 0x044F}, {"sd_IN", 0x0459},
    {"se_NO", 0x043B}, {"si_LK", 0x045B}, {"sk_SK", 0x041B}, {"sl_SI", 0x0424}, {"sq_AL", 0x041C},
    {"sr_RS", 0x281A}, {"sr_RS@latin", 0x241A}, {"sr_ME", 0x301A}, {"sv_SE", 0x041D},
    {"sv_FI", 0x081D}, {"sw_KE", 0x0441}, {"syr_SY", 0x045A}, {"ta_IN", 0x0449}, {"te_IN", 0x044A},
    {"tg_TJ", 0x0428}, {"th_TH", 0x041E}, {"tk_TM", 0x0442}, {"tn_ZA", 0x0432}, {"tr_TR", 0x041F},
    {"tt_RU", 0x0444}, {"ug_CN", 0x0480}, {"uk_UA", 0x0422}, {"ur_PK", 0x0420}, {"ur_IN", 0x0820},
    {"uz_UZ", 0x0443}, {"uz_UZ@cyrillic", 0x0843}, {"vi_VN", 0x042A}, {"xh_ZA", 0x0434},
    {"yo_NG", 0x046A}, {"zh_CN", 0x0804}, {"zh_HK", 0x0C04}, {"zh_MO", 0x1404}, {"zh_SG", 0x1004},
    {"zh_TW", 0x0404}, {"zu_ZA", 0x0435},
};

struct CodePage {
  const char* codeset;  // codeset name, upper case without "-" and "_"
  uint32_t number;      // the first platform's code page number
};

constexpr CodePage kCodePages[] = {
    {"UTF8", 65001},      {"ANSIX3.41968", 20127}, {"ASCII", 20127},    {"USASCII", 20127},
    {"ISO88591", 28591},  {"ISO88592", 28592},     {"ISO88593", 28593}, {"ISO88594", 28594},
    {"ISO88595", 28595},  {"ISO88596", 28596},     {"ISO88597", 28597}, {"ISO88598", 28598},
    {"ISO88599", 28599},  {"ISO885913", 28603},    {"ISO885915", 28605}, {"KOI8R", 20866},
    {"KOI8U", 21866},     {"CP1250", 1250},        {"CP1251", 1251},    {"CP1252", 1252},
    {"CP1253", 1253},     {"CP1254", 1254},        {"CP1255", 1255},    {"CP1256", 1256},
    {"CP1257", 1257},     {"CP1258", 1258},        {"TIS620", 874},     {"CP874", 874},
    {"SHIFTJIS", 932},    {"SJIS", 932},           {"CP932", 932},      {"EUCJP", 51932},
    {"GB2312", 936},      {"GBK", 936},            {"CP936", 936},      {"GB18030", 54936},
    {"EUCKR", 51949},     {"CP949", 949},          {"UHC", 949},        {"JOHAB", 1361},
    {"BIG5", 950},        {"BIG5HKSCS", 950},      {"CP950", 950},      {"EUCTW", 51950},
};

// The parts of a locale name that decide its identifier.
struct LocaleName {
  std::string_view language;   // "de"
  std::string_view territory;  // "DE", or empty
  std::string_view modifier;   // "latin", or empty
};

LocaleName SplitLocaleName(std::string_view name) {
  LocaleName parts;
  const size_t at = name.find('@');
  if (at != std::string_view::npos) {
    parts.modifier = name.substr(at + 1);
    name = name.substr(0, at);
  }
  name = name.substr(0, name.find('.'));
  const size_t underscore = name.find('_');
  parts.language = name.substr(0, underscore);
  if (underscore != std::string_view::npos) parts.territory = name.substr(underscore + 1);
  return parts;
}

}  // namespace

uint32_t LcidFromLocaleName(const char* name) noexcept {
  const LocaleName parts = SplitLocaleName(name);
  if (parts.language == "C" || parts.language == "POSIX" || parts.language.empty()) return kLcidInvariant;
  const LocaleId* languageRow = nullptr;
  const LocaleId* territoryRow = nullptr;
  for (const LocaleId& row : kLocaleIds) {
    const LocaleName listed = SplitLocaleName(row.name);
    if (listed.language != parts.language) continue;
    if (languageRow == nullptr) languageRow = &row;
    if (listed.territory != parts.territory) continue;
    if (listed.modifier == parts.modifier) return row.lcid;
    if (listed.modifier.empty()) territoryRow = &row;
  }
  // A modifier that names no script of its own (de_AT@euro) keeps the territory's row; a listed
  // language in an unlisted territory takes its default row.
  if (territoryRow != nullptr) return territoryRow->lcid;
  return languageRow != nullptr ? languageRow->lcid : kLcidCustomUnspecified;
}

namespace {

// The codeset name without "-", "_" and spaces, in upper case; empty if it is implausibly long.
std::string_view NormalizeCodeset(const char* codeset, char (&key)[32]) {
  size_t n = 0;
  for (const char* p = codeset; *p != 0; ++p) {
    if (*p == '-' || *p == '_' || *p == ' ') continue;
    if (n == sizeof key) return {};
    key[n++] = (*p >= 'a' && *p <= 'z') ? static_cast<char>(*p - 'a' + 'A') : *p;
  }
  return std::string_view(key, n);
}

}  // namespace

uint32_t GetUserDefaultLCID() noexcept {
  const char* name = setlocale(LC_CTYPE, nullptr);
  if (name == nullptr) return kLcidInvariant;
  return LcidFromLocaleName(name);
}

uint32_t GetACP() noexcept {
  char buffer[32];
  const std::string_view key = NormalizeCodeset(nl_langinfo(CODESET), buffer);
  for (const CodePage& row : kCodePages) {
    if (key == row.codeset) return row.number;
  }
  return 0;
}

}  // namespace qz::os
