#include "records/fields/ccsid.hpp"
#include "records/options/choice.hpp"
#include "records/options/options.hpp"

namespace oxr::rec {

namespace {

constexpr char kCopybook[] = "Copybook";
constexpr char kFields[] = "Fields";

int readCcsid(const std::string& name) {
  const std::optional<int> ccsid = ccsidOf(name);
  if (!ccsid)
    throw CLI::ValidationError("--ccsid", name + " is neither the number of a code page nor a usual name of one");
  return *ccsid;
}

}  // namespace

void addCopybookOptions(CLI::App& command, CopybookSource& copybook) {
  command.add_option("--copybook", copybook.path, "the copybook that describes the records")
      ->type_name("FILE")
      ->required()
      ->group(kCopybook);
  command.add_option("--record", copybook.options.record, "the level 01 entry to go by; the first one if not given")
      ->type_name("NAME")
      ->group(kCopybook);
  addChoice<SourceFormat>(
      command, "--format", copybook.options.format,
      {{"detect", SourceFormat::detect}, {"fixed", SourceFormat::fixed}, {"free", SourceFormat::free}},
      "how the copybook's lines are built [detect]")
      ->group(kCopybook);
  command
      .add_option(
          "-I,--include", copybook.options.includeFolders,
          "where COPY looks for other copybooks, after the folder of the text that it stands in; may be repeated")
      ->type_name("FOLDER")
      ->allow_extra_args(false)
      ->group(kCopybook);
  addChoice<BinarySizes>(command, "--binary-sizes", copybook.options.binarySizes,
                         {{"2-4-8", BinarySizes::twoFourEight},
                          {"1-2-4-8", BinarySizes::oneTwoFourEight},
                          {"1-8", BinarySizes::oneToEight}},
                         "bytes of binary numbers, as the compiler's option has it [2-4-8]")
      ->group(kCopybook);
  addChoice<Dialect>(command, "--dialect", copybook.options.dialect,
                     {{"mainframe", Dialect::mainframe}, {"gnucobol", Dialect::gnucobol}},
                     "whose boundaries of SYNCHRONIZED items and sizes of pointers [mainframe]")
      ->group(kCopybook);
}

void addFieldOptions(CLI::App& command, RecordOptions& record) {
  int& ccsid = record.plan.form.ccsid;
  command
      .add_option_function<std::string>(
          "--ccsid", [&ccsid](const std::string& name) { ccsid = readCcsid(name); },
          "the code page of the text, by its number such as 37, 273, 500, 819 or 1208, or by a usual name such as "
          "cp037, "
          "IBM-1047 or utf-8")
      ->type_name("N")
      ->required()
      ->group(kFields);
  addChoice<EEndian>(command, "--integers", record.plan.form.integerEndian,
                     {{"big", eEndianBig}, {"little", eEndianLittle}}, "byte order of binary numbers [big]")
      ->group(kFields);
  addChoice<bool>(command, "--ascii-signs", record.plan.form.hasLetterSigns, {{"letters", true}, {"plain", false}},
                  "signs within digits where the code page is not EBCDIC: the letters that EBCDIC signs turn into, or "
                  "p to y for the digits of a negative number [plain]")
      ->group(kFields);
}

namespace {

const Words<EmptyNumber> kEmptyWords = {
    {"error", EmptyNumber::isError}, {"null", EmptyNumber::isNull}, {"zero", EmptyNumber::isZero}};

// How numbers are read that are not stored as the copybook says.
void addNumberOptions(CLI::App& command, PhysicalForm& form) {
  addChoice<FloatForm>(command, "--floats", form.floats,
                       {{"hex", FloatForm::hexBig},
                        {"hex-le", FloatForm::hexLittle},
                        {"ieee-be", FloatForm::ieeeBig},
                        {"ieee-le", FloatForm::ieeeLittle}},
                       "COMP-1 and COMP-2: hexadecimal or IEEE, most significant byte first or (-le) last [hex]")
      ->group(kFields);
  addChoice<EmptyNumber>(command, "--blank-numbers", form.blankNumbers, kEmptyWords,
                         "a DISPLAY or packed number that is all blanks: a bad field, null or zero [error]")
      ->group(kFields);
  addChoice<EmptyNumber>(command, "--low-values", form.lowValues, kEmptyWords,
                         "the same for one that is all NULs [error]")
      ->group(kFields);
  command
      .add_flag("--lenient-numbers", form.lenientNumbers,
                "read DISPLAY numbers whose digits are padded with blanks or NULs")
      ->group(kFields);
  addChoice<bool>(command, "--edited", form.editedAsNumber, {{"text", false}, {"number", true}},
                  "edited pictures as the text that they show, or as numbers [text]")
      ->group(kFields);
}

void addSettingOptions(CLI::App& command, RecordOptions& record) {
  std::vector<FieldSettingText>& settings = record.plan.fieldSettings;
  command
      .add_option_function<std::vector<std::string>>(
          "--field",
          [&settings](const std::vector<std::string>& given) {
            settings.insert(settings.end(), given.begin(), given.end());
          },
          "PATH:key=value: what holds for a field, or for all fields of a group; keys are date (a pattern such as "
          "yyyyMMdd), sign and packed-sign (leading or trailing), plus (C, F, A, E or +), and the options of this "
          "topic; "
          "may be repeated")
      ->type_name("SETTING")
      ->allow_extra_args(false)
      ->group(kFields);
  command
      .add_option_function<std::string>(
          "--fields",
          [&settings, &files = record.settingFiles](const std::string& path) {
            try {
              files.push_back(path);
              const std::vector<FieldSettingText> read = readFieldSettingsFile(path);
              settings.insert(settings.begin(), read.begin(), read.end());
            } catch (const PlanError& error) {
              throw CLI::ValidationError(error.what());
            }
          },
          "such settings from a file, a line each; lines that begin with # are passed over")
      ->type_name("FILE")
      ->group(kFields);
}

}  // namespace

void addValueOptions(CLI::App& command, RecordOptions& record) {
  addKindOptions(command, record);
  addNumberOptions(command, record.plan.form);
  addSettingOptions(command, record);
}

void addRecordOptions(CLI::App& command, RecordOptions& record) {
  addCopybookOptions(command, record.copybook);
  addKindOptions(command, record);
  addFieldOptions(command, record);
  addNumberOptions(command, record.plan.form);
  addSettingOptions(command, record);
  addLengthOptions(command, record);
}

}  // namespace oxr::rec
