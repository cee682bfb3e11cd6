#include "UIKit/Private/SystemText.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "Foundation/NSLocale.h"

namespace ios {
namespace {

constexpr std::size_t kLanguages = 12;
constexpr std::array<std::string_view, kLanguages> kNames = {"en", "ar", "de", "es", "fr", "he",
                                                             "it", "ja", "ko", "pt", "ru", "zh"};
using Row = std::array<std::string_view, kLanguages>;

// clang-format off
constexpr std::array<Row, 8> kTexts = {{
    {"Back", "رجوع", "Zurück", "Atrás", "Retour", "חזרה", "Indietro", "戻る", "뒤로", "Voltar", "Назад", "返回"},
    {"More", "المزيد", "Mehr", "Más", "Plus", "עוד", "Altro", "その他", "더 보기", "Mais", "Ещё", "更多"},
    {"Don't Allow", "عدم السماح", "Nicht erlauben", "No permitir", "Refuser", "לא לאשר", "Non consentire", "許可しない",
     "허용 안 함", "Não Permitir", "Запретить", "不允许"},
    {"OK", "موافق", "OK", "OK", "OK", "אישור", "OK", "OK", "확인", "OK", "OK", "好"},
    {"\"%@\" Would Like to Access the Microphone", "يرغب \"%@\" في الوصول إلى الميكروفون",
     "„%@“ möchte auf das Mikrofon zugreifen", "«%@» quiere acceder al micrófono",
     "« %@ » souhaite accéder au micro", "\"%@\" מבקש לגשת אל המיקרופון", "\"%@\" vorrebbe accedere al microfono",
     "“%@”がマイクへのアクセスを求めています", "‘%@’이(가) 마이크에 접근하려고 합니다",
     "\"%@\" Deseja Acessar o Microfone", "Приложение «%@» запрашивает доступ к микрофону", "“%@”想访问麦克风"},
    {"\"%@\" Would Like to Access Your Photos", "يرغب \"%@\" في الوصول إلى صورك",
     "„%@“ möchte auf deine Fotos zugreifen", "«%@» quiere acceder a tus fotos",
     "« %@ » souhaite accéder à vos photos", "\"%@\" מבקש לגשת אל התמונות שלך", "\"%@\" vorrebbe accedere alle tue foto",
     "“%@”が写真へのアクセスを求めています", "‘%@’이(가) 사진에 접근하려고 합니다",
     "\"%@\" Deseja Acessar Suas Fotos", "Приложение «%@» запрашивает доступ к фотографиям", "“%@”想访问您的照片"},
    {"\"%@\" Would Like to Access the Camera", "يرغب \"%@\" في الوصول إلى الكاميرا",
     "„%@“ möchte auf die Kamera zugreifen", "«%@» quiere acceder a la cámara",
     "« %@ » souhaite accéder à l’appareil photo", "\"%@\" מבקש לגשת אל המצלמה",
     "\"%@\" vorrebbe accedere alla fotocamera", "“%@”がカメラへのアクセスを求めています",
     "‘%@’이(가) 카메라에 접근하려고 합니다", "\"%@\" Deseja Acessar a Câmera",
     "Приложение «%@» запрашивает доступ к камере", "“%@”想访问相机"},
    {"\"%@\" Would Like to Record the Screen", "يرغب \"%@\" في تسجيل الشاشة",
     "„%@“ möchte den Bildschirm aufnehmen", "«%@» quiere grabar la pantalla",
     "« %@ » souhaite enregistrer l’écran", "\"%@\" מבקש להקליט את המסך", "\"%@\" vorrebbe registrare lo schermo",
     "“%@”が画面の収録を求めています", "‘%@’이(가) 화면을 기록하려고 합니다", "\"%@\" Deseja Gravar a Tela",
     "Приложение «%@» запрашивает запись экрана", "“%@”想录制屏幕"},
}};
// clang-format on

/// The column of the user's language.
std::size_t language() {
  for (const std::string& preferred : NSLocale::preferredLanguages()) {
    const std::string_view base = std::string_view(preferred).substr(0, preferred.find_first_of("-_"));
    const auto found = std::find(kNames.begin(), kNames.end(), base == "iw" ? "he" : base);
    if (found != kNames.end()) return static_cast<std::size_t>(found - kNames.begin());
  }
  return 0;
}

}  // namespace

std::string systemText(const std::string& english) {
  const auto row =
      std::find_if(kTexts.begin(), kTexts.end(), [&](const Row& texts) { return texts[0] == english; });
  return row == kTexts.end() ? english : std::string((*row)[language()]);
}

std::string systemText(const std::string& english, const std::string& name) {
  std::string text = systemText(english);
  if (const auto place = text.find("%@"); place != std::string::npos) text.replace(place, 2, name);
  return text;
}

}  // namespace ios
