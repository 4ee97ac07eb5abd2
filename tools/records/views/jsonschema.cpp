#include "records/views/shown.hpp"
#include "records/views/views.hpp"

namespace oxr::rec {

namespace {

class SchemaWriter {
 public:
  SchemaWriter(const RecordPlan& plan, bool pointsAsText) : plan_(plan), pointsAsText_(pointsAsText) {}

  std::string write() {
    const Shown record = shownRecord(plan_);
    text_ = "{\n  \"$schema\": \"https://json-schema.org/draft/2020-12/schema\",\n";
    if (!record.name.empty()) text_ += "  \"title\": \"" + record.name + "\",\n";
    object(record, 2);
    text_ += "\n}\n";
    return std::move(text_);
  }

 private:
  // All members of the object's schema; its braces are the caller's.
  void object(const Shown& shown, std::size_t indent) {
    const std::string margin(indent, ' ');
    text_ += margin + "\"type\": \"object\",\n" + margin + "\"properties\": {";
    std::string required;
    const char* before = "\n";
    for (const Shown& child : shown.children) {
      text_ += before + margin + "  \"" + child.name + "\": ";
      value(child, indent + 2);
      required += (required.empty() ? "\"" : ", \"") + child.name + '"';
      before = ",\n";
    }
    text_ += '\n' + margin + "},\n" + margin + "\"required\": [" + required + "],\n" + margin +
             "\"additionalProperties\": false";
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

  // A binary number may be larger than its picture: no bound but that of the sign is told.
  std::string field(const Step& step) const {
    const Item& item = plan_.layout().items[step.item];
    switch (step.kind) {
      case Kind::external:
      case Kind::binary:
      case Kind::nativeBinary:
      case Kind::packed:
      case Kind::unsignedPacked:
        if (item.scale > 0 && pointsAsText_) return R"({ "type": "string", "pattern": "^-?[0-9]+\\.[0-9]+$" })";
        return std::string(R"({ "type": ")") + (item.scale > 0 ? "number" : "integer") +
               (item.isSigned ? "\" }" : "\", \"minimum\": 0 }");
      case Kind::shortFloat:
      case Kind::longFloat:
        return R"({ "type": "number" })";
      case Kind::national:
      case Kind::dbcs:
        return string(item.size / 2);
      default:
        return string(item.size);
    }
  }

  static std::string string(std::uint32_t characters) {
    return R"({ "type": "string", "maxLength": )" + std::to_string(characters) + " }";
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
