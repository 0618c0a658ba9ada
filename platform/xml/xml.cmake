# Sources of the XML message library, relative to platform/.
set(KP_XML_SOURCES
  xml/AppMessages.cc
  xml/CNBase64.cc
  xml/CNEntity.cc
  xml/CNMessageBase.cc
  xml/CNMessageCatalog.cc
  xml/CNRecordLayout.cc
  xml/CNXmlReader.cc
  xml/CNXmlText.cc
  xml/CNXmlWriter.cc
  xml/KPGuiMessages.cc
)
