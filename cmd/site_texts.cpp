#include "site_texts.h"

namespace cmd {

std::span<const SiteLanguage> siteLanguages() {
    static constexpr SiteLanguage table[] = {
        {"eng", "ISO-8859-1", "en", "Login failed", "Back to the login page"},
        {"jpn", "SHIFT-JIS", "ja", "ログインできません", "ログイン画面に戻る"},
        {"chn", "GB2312", "zh-CN", "登录失败", "返回登录页面"},
        {"kor", "EUC-KR", "ko", "로그인 실패", "로그인 화면으로 돌아가기"},
    };
    return table;
}

std::span<const SiteMessage> siteMessages() {
    // 79 to 85 are printed by the library's callbacks, 110 and 111 take a length. 80 is also the
    // kind of body that is no HTML.
    static constexpr SiteMessage table[] = {
        {79, {"HTML", "HTML", "HTML", "HTML"}},
        {80, {"Text", "テキスト", "文本", "텍스트"}},
        {81, {"Highest", "最高", "最高", "매우 높음"}},
        {82, {"High", "高", "高", "높음"}},
        {83, {"Normal", "普通", "普通", "보통"}},
        {84, {"Low", "低", "低", "낮음"}},
        {85, {"Lowest", "最低", "最低", "매우 낮음"}},
        {101,
         {"Enter your user name.", "ユーザー名を入力してください。", "请输入用户名。",
          "사용자 이름을 입력하십시오."}},
        {102,
         {"Enter your password.", "パスワードを入力してください。", "请输入密码。",
          "비밀번호를 입력하십시오."}},
        {103,
         {"User name or password is wrong.", "ユーザー名またはパスワードが正しくありません。",
          "用户名或密码不正确。", "사용자 이름 또는 비밀번호가 올바르지 않습니다."}},
        {104,
         {"Your session has ended. Log in again.",
          "セッションが終了しました。もう一度ログインしてください。", "会话已结束，请重新登录。",
          "세션이 끝났습니다. 다시 로그인하십시오."}},
        {105,
         {"Too many attempts. Try again later.",
          "試行回数が多すぎます。しばらくしてからもう一度お試しください。",
          "尝试次数过多，请稍后再试。", "시도 횟수가 너무 많습니다. 나중에 다시 시도하십시오."}},
        {110,
         {"A user name has at most %d characters.", "ユーザー名は%d文字以内です。",
          "用户名最多%d个字符。", "사용자 이름은 최대 %d자입니다."}},
        {111,
         {"A password has at most %d characters.", "パスワードは%d文字以内です。",
          "密码最多%d个字符。", "비밀번호는 최대 %d자입니다."}},
    };
    return table;
}

std::span<const SiteMediaType> siteMediaTypes() {
    static constexpr SiteMediaType table[] = {
        {"text/plain", "txt text log TXT"},
        {"text/html", "html htm HTM HTML"},
        {"text/css", "css"},
        {"text/csv", "csv CSV"},
        {"text/calendar", "ics"},
        {"text/vcard", "vcf"},
        {"text/richtext", "rtx"},
        {"text/tab-separated-values", "tsv"},
        {"text/x-c", "c h"},
        {"image/gif", "gif GIF"},
        {"image/jpeg", "jpeg jpg jpe JPG JPEG"},
        {"image/png", "png PNG"},
        {"image/bmp", "bmp BMP"},
        {"image/tiff", "tiff tif TIF"},
        {"image/svg+xml", "svg"},
        {"image/webp", "webp"},
        {"image/heic", "heic HEIC"},
        {"image/vnd.microsoft.icon", "ico"},
        {"audio/mpeg", "mp3 mp2 MP3"},
        {"audio/x-wav", "wav WAV"},
        {"audio/midi", "mid midi"},
        {"audio/mp4", "m4a"},
        {"audio/ogg", "ogg oga opus"},
        {"audio/flac", "flac"},
        {"video/mpeg", "mpeg mpg MPG"},
        {"video/mp4", "mp4 m4v MP4"},
        {"video/quicktime", "mov qt MOV"},
        {"video/webm", "webm"},
        {"video/x-msvideo", "avi AVI"},
        {"video/x-ms-wmv", "wmv"},
        {"message/rfc822", "eml"},
        {"application/pdf", "pdf PDF"},
        {"application/postscript", "ps eps ai"},
        {"application/rtf", "rtf RTF"},
        {"application/json", "json"},
        {"application/xml", "xml"},
        {"application/zip", "zip ZIP"},
        {"application/gzip", "gz tgz"},
        {"application/x-bzip2", "bz2"},
        {"application/x-tar", "tar"},
        {"application/x-7z-compressed", "7z"},
        {"application/vnd.rar", "rar"},
        {"application/msword", "doc DOC"},
        {"application/vnd.ms-excel", "xls XLS"},
        {"application/vnd.ms-powerpoint", "ppt PPT"},
        {"application/vnd.openxmlformats-officedocument.wordprocessingml.document", "docx DOCX"},
        {"application/vnd.openxmlformats-officedocument.spreadsheetml.sheet", "xlsx XLSX"},
        {"application/vnd.openxmlformats-officedocument.presentationml.presentation", "pptx PPTX"},
        {"application/vnd.oasis.opendocument.text", "odt"},
        {"application/vnd.oasis.opendocument.spreadsheet", "ods"},
        {"application/x-hwp", "hwp HWP"},
        {"application/pkcs7-mime", "p7m"},
        {"application/pkcs7-signature", "p7s"},
        {"application/pgp-signature", "sig asc"},
    };
    return table;
}

}  // namespace cmd
