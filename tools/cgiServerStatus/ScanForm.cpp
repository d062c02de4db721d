#include "ScanCfgIni.h"
#include "ScanDefaults.h"
#include "StatusPage.h"

namespace wrb {
namespace {

void PutAttribute(CPutStream& out, const char* name, const wchar_t* value) {
    out << " " << name << "=\"";
    out.Send(value, true);
    out << "\"";
}

void PutSelect(CPutStream& out, const ScanRow& row, const std::wstring& value) {
    out << "<select";
    PutAttribute(out, "name", row.key.data());
    out << ">";
    for (const uint32_t number : FieldChoices(row)) {
        const std::wstring text = std::to_wstring(number);
        out << "<option" << (text == value ? " selected" : "") << ">" << text.c_str() << "</option>";
    }
    out << "</select>";
}

void PutInput(CPutStream& out, const ScanRow& row, const std::wstring& value) {
    out << "<input";
    PutAttribute(out, "name", row.key.data());
    PutAttribute(out, "value", value.c_str());
    if (row.kind == ScanRowKind::Int) {
        out << " type=\"number\" min=\"0\" max=\"" << static_cast<int>(kHighestFormNumber) << "\">";
    } else {
        out << " size=\"60\" maxlength=\"" << static_cast<int>(kLongestFormText) << "\">";
    }
}

void PutField(CPutStream& out, const ScanRow& row, const std::wstring& value) {
    out << "<tr>";
    PutCell(out, std::wstring(row.key));
    out << "<td>";
    const bool isSelect = row.kind == ScanRowKind::Bit || row.kind == ScanRowKind::Choice;
    (isSelect ? PutSelect : PutInput)(out, row, value);
    out << "</td></tr>\n";
}

}  // namespace

void PutScanForm(CPutStream& out, CINICache& scanIni) {
    ScanGroupValues values;
    ReadScanGroupIni(scanIni, FormGroup(), values);
    out << "<h2>Server-wide defaults: ";
    out.Send(FormGroup().section.data(), true);
    out << "</h2>\n<form method=\"post\">\n<input type=\"hidden\" name=\"action\" value=\"store\">\n<table>\n";
    for (const ScanRow& row : FormGroup().rows) {
        if (row.IsSetting()) {
            PutField(out, row, FieldText(row, values));
        }
    }
    out << "</table>\n<input type=\"hidden\" name=\"complete\" value=\"1\">\n<button>Store</button>\n</form>\n"
           "<h2>Defaults from a file</h2>\n<form method=\"post\" enctype=\"multipart/form-data\">\n"
           "<input type=\"hidden\" name=\"action\" value=\"upload\">\n"
           "<input type=\"file\" name=\"defaults\" accept=\".ini\">\n<button>Upload</button>\n</form>\n";
}

}  // namespace wrb
