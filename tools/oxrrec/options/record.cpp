#include "oxrrec/options/choice.hpp"
#include "oxrrec/options/options.hpp"
#include "records/fields/ccsid.hpp"

namespace oxr::rec {

namespace {

constexpr char kCopybookTopic[] = "Copybook";
constexpr char kFieldTopic[] = "Fields";

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
      ->group(kCopybookTopic);
  command.add_option("--record", copybook.options.record, "the level 01 entry to go by; the first one if not given")
      ->type_name("NAME")
      ->group(kCopybookTopic);
  addChoice<SourceFormat>(
      command, "--format", copybook.options.format,
      {{"detect", SourceFormat::detect}, {"fixed", SourceFormat::fixed}, {"free", SourceFormat::free}},
      "how the copybook's lines are built [detect]")
      ->group(kCopybookTopic);
  command
      .add_option(
          "-I,--include", copybook.options.includeFolders,
          "where COPY looks for other copybooks, after the folder of the text that it stands in; may be repeated")
      ->type_name("FOLDER")
      ->allow_extra_args(false)
      ->group(kCopybookTopic);
  addChoice<BinarySizes>(command, "--binary-sizes", copybook.options.binarySizes,
                         {{"2-4-8", BinarySizes::twoFourEight},
                          {"1-2-4-8", BinarySizes::oneTwoFourEight},
                          {"1-8", BinarySizes::oneToEight}},
                         "bytes of binary numbers, as the compiler's option has it [2-4-8]")
      ->group(kCopybookTopic);
  addChoice<Dialect>(command, "--dialect", copybook.options.dialect,
                     {{"mainframe", Dialect::mainframe}, {"gnucobol", Dialect::gnucobol}},
                     "whose boundaries of SYNCHRONIZED items and sizes of pointers [mainframe]")
      ->group(kCopybookTopic);
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
      ->group(kFieldTopic);
  addChoice<EEndian>(command, "--integers", record.plan.form.integerEndian,
                     {{"big", eEndianBig}, {"little", eEndianLittle}}, "byte order of binary numbers [big]")
      ->group(kFieldTopic);
  addChoice<bool>(command, "--ascii-signs", record.plan.form.hasLetterSigns, {{"letters", true}, {"plain", false}},
                  "signs within digits where the code page is not EBCDIC: the letters that EBCDIC signs turn into, or "
                  "p to y for the digits of a negative number [plain]")
      ->group(kFieldTopic);
}

void addRecordOptions(CLI::App& command, RecordOptions& record) {
  addCopybookOptions(command, record.copybook);
  addKindOptions(command, record);
  addFieldOptions(command, record);
  addLengthOptions(command, record);
}

}  // namespace oxr::rec
