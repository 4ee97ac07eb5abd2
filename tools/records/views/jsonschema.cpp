#include <algorithm>
#include <span>

#include "records/fields/datepattern.hpp"
#include "records/views/shown.hpp"
#include "records/views/views.hpp"

namespace oxr::rec {

namespace {

class SchemaWriter {
 public:
  SchemaWriter(const RecordPlan& plan, bool pointsAsText) : plan_(plan), pointsAsText_(pointsAsText) {}

  std::string write() {
    text_ = "{\n  \"$schema\": \"https://json-schema.org/draft/2020-12/schema\",\n";
    const auto& kinds = plan_.kinds();
    if (kinds.size() == 1) {
      record(kinds.front(), 2);
    } else {
      text_ += "  \"anyOf\": [";
      for (const RecordKind& kind : kinds) {
        text_ += &kind == kinds.data() ? "\n    {\n" : ",\n    {\n";
        record(kind, 6);
        text_ += "\n    }";
      }
      text_ += "\n  ]";
    }
    text_ += "\n}\n";
    return std::move(text_);
  }

 private:
  void record(const RecordKind& kind, std::size_t indent) {
    if (!kind.name.empty()) text_ += std::string(indent, ' ') + "\"title\": \"" + kind.name + "\",\n";
    object(shownRecord(plan_, kind), indent);
  }

  // All members of the object's schema; its braces are the caller's.
  void object(const Shown& shown, std::size_t indent) {
    const std::string margin(indent, ' ');
    text_ += margin + "\"type\": \"object\",\n" + margin + "\"properties\": {";
    std::string required;
    const char* before = "\n";
    const auto& children = shown.children;
    for (auto child = children.begin(); child != children.end(); ++child) {
      const auto isNamesake = [&child](const Shown& other) { return other.name == child->name; };
      if (std::any_of(children.begin(), child, isNamesake)) continue;
      text_ += before + margin + "  \"" + child->name + "\": ";
      if (const auto other = std::find_if(child + 1, children.end(), isNamesake); other == children.end())
        value(*child, indent + 2);
      else
        anyOf(std::span(child, children.end()), indent + 2);
      if (!child->isOptional) required += (required.empty() ? "\"" : ", \"") + child->name + '"';
      before = ",\n";
    }
    text_ += '\n' + margin + "},\n" + margin + "\"required\": [" + required + "],\n" + margin +
             "\"additionalProperties\": false";
  }

  // What alternatives have under the name of the first one.
  void anyOf(std::span<const Shown> children, std::size_t indent) {
    const char* before = "{ \"anyOf\": [";
    for (const Shown& child : children) {
      if (child.name != children.front().name) continue;
      text_ += before;
      value(child, indent);
      before = ", ";
    }
    text_ += "] }";
  }

  void value(const Shown& shown, std::size_t indent) {
    if (shown.isField()) {
      text_ += field(*shown.step);
      return;
    }
    text_ += "{\n";
    const std::string margin(indent + 2, ' ');
    if (shown.isArray()) {
      text_ += margin + "\"type\": \"array\",\n" + margin + "\"minItems\": " + std::to_string(shown.step->min) + ",\n" +
               margin + "\"maxItems\": " + std::to_string(shown.step->max) + ",\n" + margin + "\"items\": ";
      value(shown.children.front(), indent + 2);
    } else {
      object(shown, indent + 2);
    }
    text_ += '\n' + std::string(indent, ' ') + '}';
  }

  // "{ "type": "integer", "minimum": 0 }". A binary number may be larger than its picture: no bound but that of the
  // sign is told.
  std::string field(const Step& step) const {
    const PhysicalForm& form = plan_.forms()[step.form];
    const Item& item = itemOf(plan_, step);
    const bool mayBeNull = form.blankNumbers == EmptyNumber::isNull || form.lowValues == EmptyNumber::isNull;
    if (!form.date.empty()) return typed("string", mayBeNull || hasZero(form), dateRule(form.date));
    const bool isEditedNumber = step.edited != nullptr || (step.kind == Kind::edited && form.editedAsNumber);
    switch (isEditedNumber ? Kind::external : step.kind) {
      case Kind::external:
      case Kind::packed:
        return number(step, mayBeNull, isEditedNumber || item.isSigned);
      case Kind::binary:
      case Kind::nativeBinary:
      case Kind::unsignedPacked:
        return number(step, false, item.isSigned);
      case Kind::shortFloat:
      case Kind::longFloat:
        return typed("number", false, {});
      case Kind::national:
      case Kind::dbcs:
        return typed("string", false, atMost(item.size / 2));
      default:
        return typed("string", false, atMost(item.size));
    }
  }

  // A date is never zero: blanks or NULs that are said to be one give null.
  static bool hasZero(const PhysicalForm& form) {
    return form.blankNumbers == EmptyNumber::isZero || form.lowValues == EmptyNumber::isZero;
  }

  std::string number(const Step& step, bool mayBeNull, bool isSigned) const {
    if (step.scale > 0 && pointsAsText_) return typed("string", mayBeNull, R"(, "pattern": "^-?[0-9]+\\.[0-9]+$")");
    return typed(step.scale > 0 ? "number" : "integer", mayBeNull, isSigned ? "" : ", \"minimum\": 0");
  }

  static std::string typed(const std::string& type, bool mayBeNull, const std::string& rule) {
    return "{ \"type\": " + (mayBeNull ? "[\"" + type + "\", \"null\"]" : '"' + type + '"') + rule + " }";
  }

  static std::string atMost(std::uint32_t characters) { return ", \"maxLength\": " + std::to_string(characters); }

  // A time without a zone is none of the formats that a schema knows.
  static std::string dateRule(const std::string& date) {
    const std::string iso = readDatePattern(date).iso;
    const bool hasDay = iso.starts_with("yyyy-MM-dd"), hasZone = iso.ends_with('Z');
    if (iso == "yyyy-MM-dd") return R"(, "format": "date")";
    if (hasZone && hasDay && iso.find('T') != std::string::npos) return R"(, "format": "date-time")";
    if (hasZone && iso.starts_with("HH")) return R"(, "format": "time")";
    std::string pattern = R"(, "pattern": "^)";
    PatternRuns runs(iso);
    for (std::optional<PatternRun> run = runs.next(); run; run = runs.next())
      if (run->letter == 0)
        pattern += run->literal == '.' ? R"(\\.)" : std::string(1, run->literal);
      else
        pattern += run->letter == 'Z' ? ".+" : "[0-9]{" + std::to_string(run->width) + '}';
    return pattern + "$\"";
  }

  const RecordPlan& plan_;
  const bool pointsAsText_;
  std::string text_;
};

}  // namespace

std::string jsonSchema(const RecordPlan& plan, bool pointsAsText) {
  return SchemaWriter(plan, pointsAsText).write();
}

}  // namespace oxr::rec
